// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_SUPPORT_INCHILD_H
#define NORIX_TESTS_SUPPORT_INCHILD_H

#include "support/Outcome.h"

#include <functional>

namespace support {

/// Runs a function in a forked child until it returns its exit status. Captures standard error
/// only.
Outcome inChild(const std::function<int()> &function);

} // namespace support

#endif
