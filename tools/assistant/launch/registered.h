// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_LAUNCH_REGISTERED_H
#define NORIX_ASSISTANT_LAUNCH_REGISTERED_H

#include "assistant/actions/Declarations.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace norix::assistant::launch {

/// The ids of the actions that an application has registered, as its probe has seen it. Nothing for
/// an application that was not started by launch.
std::optional<std::set<std::string>> registeredActions(const std::string &appId);

/// Where declarations and registrations differ.
struct Drift {
  std::vector<std::string> notRegistered;
  std::vector<std::string> notDeclared;
};

Drift compare(const actions::Declarations &declared, const std::set<std::string> &registered);

} // namespace norix::assistant::launch

#endif
