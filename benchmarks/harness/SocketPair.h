// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_BENCHMARKS_HARNESS_SOCKETPAIR_H
#define NORIX_BENCHMARKS_HARNESS_SOCKETPAIR_H

#include <string>

namespace benchmarks {

/** @brief Two connected Unix stream sockets: one to keep, one for a process that is started. */
class SocketPair {
public:
  SocketPair();
  ~SocketPair();
  SocketPair(const SocketPair &) = delete;
  SocketPair &operator=(const SocketPair &) = delete;

  int own() const { return _own; }
  /** @brief The number under which the started process finds its end. */
  std::string others() const { return std::to_string(_others); }
  /** @brief To be called when the process has been started: nobody else may inherit its end. */
  void handOver();
  /** @brief Leaves the own end to somebody who closes it. */
  int release();

private:
  int _own = -1;
  int _others = -1;
};

} // namespace benchmarks

#endif
