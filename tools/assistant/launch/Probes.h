// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_LAUNCH_PROBES_H
#define NORIX_ASSISTANT_LAUNCH_PROBES_H

#include "assistant/launch/sockets.h"
#include "assistant/trace/Event.h"

#include <poll.h>

#include <list>
#include <string>
#include <vector>

namespace norix::assistant::launch {

/// The probes of a launched application and of its children, and the events that they report.
class Probes {
public:
  /// @throw std::runtime_error when the socket cannot be made
  explicit Probes(const std::string &appId);
  ~Probes();
  Probes(const Probes &) = delete;
  Probes &operator=(const Probes &) = delete;

  /// What $NORIX_PROBE_SOCKET is for the application.
  const std::string &path() const { return _path; }

  void addTo(std::vector<pollfd> &polled) const;
  /// The lines that have arrived; nothing more is there when it returns an empty list.
  std::vector<std::string> read();
  /// Whether a probe is connected.
  bool areConnected() const { return !_probes.empty(); }

private:
  struct Probe {
    Descriptor connection;
    trace::LineBuffer lines;
    bool isGone = false;
  };

  std::string _path;
  Descriptor _listening;
  std::list<Probe> _probes;
};

/// The path of libnorix-probe.so: beside this program's own libraries, or what
/// $NORIX_PROBE_LIBRARY says.
/// @throw LaunchError when there is none
std::string findProbeLibrary();

} // namespace norix::assistant::launch

#endif
