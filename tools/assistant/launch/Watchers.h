// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_LAUNCH_WATCHERS_H
#define NORIX_ASSISTANT_LAUNCH_WATCHERS_H

#include "assistant/launch/sockets.h"

#include <poll.h>

#include <list>
#include <string>
#include <vector>

namespace norix::assistant::launch {

/// The processes that look on while an application runs (monitor, run --trace, list): each gets
/// every event as a line. One that does not read is left behind, and disconnected when too much
/// waits.
class Watchers {
public:
  /// Listens for them. When another process already launched the application, nobody can look on.
  explicit Watchers(const std::string &appId);
  ~Watchers();
  Watchers(const Watchers &) = delete;
  Watchers &operator=(const Watchers &) = delete;

  /// Adds what to wait for.
  void addTo(std::vector<pollfd> &polled) const;
  /// Takes those who came, who get this line first; sends what waits; forgets those who left.
  void serve(const std::string &greeting);
  void send(const std::string &line);

private:
  struct Watcher {
    Descriptor connection;
    std::string waiting;
    bool isGone = false;
  };

  static void sendWaiting(Watcher &watcher);
  static void noticeEnd(Watcher &watcher);

  std::string _path;
  Descriptor _listening;
  std::list<Watcher> _watchers;
};

/// Where an application's watchers connect.
std::string watchPath(const std::string &appId);

} // namespace norix::assistant::launch

#endif
