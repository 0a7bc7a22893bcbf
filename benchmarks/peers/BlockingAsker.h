// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_BENCHMARKS_PEERS_BLOCKINGASKER_H
#define NORIX_BENCHMARKS_PEERS_BLOCKINGASKER_H

#include "harness/SocketPair.h"
#include "peers/Peer.h"
#include "support/Process.h"

#include <array>

namespace benchmarks {

/** @brief A request on a socket: the size of the answer in four bytes, and what fills it up. */
using RequestBytes = std::array<char, kRequestSize>;

/** @brief A request for an answer of that size. */
RequestBytes requestFor(std::size_t answerSize);
/** @brief The size of the answer that a request asks for. */
std::size_t answerSizeOf(const RequestBytes &request);

/** @brief Asks a process over two sockets, one per direction, with blocking calls. */
class BlockingAsker final : public Peer {
public:
  /** @param kind Whose serve() is to be asked; it gets the sockets for requests and answers. */
  explicit BlockingAsker(const std::string &kind);

  void exchange(std::size_t answerSize, int count, Samples &samples) override;

private:
  SocketPair _requests;
  SocketPair _answers;
  support::Process _process;
  std::vector<char> _answer;
};

} // namespace benchmarks

#endif
