// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_PLATFORM_DLOG_SUPPORT_CHILD_H
#define TESTS_PLATFORM_DLOG_SUPPORT_CHILD_H

#include "support/Outcome.h"
#include "support/TemporaryFolder.h"

#include <functional>
#include <map>
#include <string>

using support::contentOf;
using support::Outcome;
using support::TemporaryFolder;

using Environment = std::map<std::string, std::string>;

/// Runs a function in a forked child, where nothing has been logged yet. Of the log's environment
/// variables only the given ones are set.
Outcome inChild(const Environment &environment, const std::function<int()> &function);

/// The lines without time and process id: `E/TAG     : text`.
std::string withoutTimeAndPid(const std::string &line);

#endif
