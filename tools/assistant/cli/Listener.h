// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLI_LISTENER_H
#define NORIX_ASSISTANT_CLI_LISTENER_H

#include <ctime>
#include <filesystem>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace norix::assistant::cli {

/// An application of this user that listens for requests.
struct Listener {
  std::string appId;
  /// 0 when it runs where this process cannot see it, as in another container.
  pid_t pid = 0;
  /// When it began to listen.
  std::time_t since = 0;
};

/// The folder in which every application that listens has a folder of its own, named after it, with
/// its socket. The desktop platform makes it; on a device there is none.
std::filesystem::path portsFolder();

/// The application with this id, if it listens. It is not asked, and notices a connection that is
/// closed at once.
std::optional<Listener> findListener(const std::string &appId);

/// All of them, by id.
std::vector<Listener> findListeners();

} // namespace norix::assistant::cli

#endif
