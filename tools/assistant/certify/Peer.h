// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CERTIFY_PEER_H
#define NORIX_ASSISTANT_CERTIFY_PEER_H

#include "assistant/launch/sockets.h"

#include <functional>
#include <string>
#include <sys/types.h>

namespace norix::assistant::certify {

/// Another assistant, in a process of its own, that does what it is told step by step and nothing
/// in between: it does not even read. It ends with this object, killed.
class Peer {
public:
  /// Called in the other process, for the first time with 0. An exception makes next() fail.
  using Step = std::function<void(int number)>;

  /// @throw std::runtime_error when there can be no further process
  explicit Peer(const Step &step);
  ~Peer();
  Peer(const Peer &) = delete;
  Peer &operator=(const Peer &) = delete;

  /// Lets it do the next step, and waits for that. @return Whether it succeeded
  bool next();
  /// Ends it with SIGKILL.
  void kill();

private:
  [[noreturn]] static void serve(const Step &step, int channel);

  launch::Descriptor _channel;
  pid_t _process = -1;
};

} // namespace norix::assistant::certify

#endif
