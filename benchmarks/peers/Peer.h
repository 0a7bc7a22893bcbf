// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_BENCHMARKS_PEERS_PEER_H
#define NORIX_BENCHMARKS_PEERS_PEER_H

#include "harness/Samples.h"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace benchmarks {

/** @brief What every request carries, whoever takes it, counted in bytes. */
inline constexpr std::size_t kRequestSize = 200;

/** @brief A process that answers requests, and this process's connection to it. */
class Peer {
public:
  virtual ~Peer() = default;
  /**
   * @brief Makes so many requests, one after the other, for an answer of so many bytes.
   * @throw std::runtime_error when an answer does not come or is not as long as it should be
   */
  virtual void exchange(std::size_t answerSize, int count, Samples &samples) = 0;
};

/** @brief A way to ask another process something, and what it needs. */
struct PeerKind {
  std::string name;
  /** Starts the other process and connects to it; null when this build has no such peer. */
  std::function<std::unique_ptr<Peer>(const std::filesystem::path &folder)> start;
  /** The other process's part, with what start() passed to it; ends when the peer has gone. */
  std::function<int(const std::vector<std::string> &arguments)> serve;
  /** The Debian packages without which a build has no such peer. */
  std::string packages;
};

PeerKind bareSockets();
PeerKind ecoreSockets();
PeerKind ecoreSocketsWithDuties();
PeerKind ecoreSocketsBothSides();
PeerKind messageBus();
PeerKind busPeerToPeer();
PeerKind grpcOverUnixSocket();
PeerKind libraryInCallback();
PeerKind libraryInLaterTurn();
PeerKind libraryAndAssistant();

/** @brief The command that runs the serving part of a kind in a process of its own. */
std::vector<std::string> serveCommand(const std::string &kind,
                                      const std::vector<std::string> &arguments);

/** @throw std::runtime_error unless the answer has the size that was asked for */
void checkAnswer(std::size_t expected, std::size_t actual);

} // namespace benchmarks

#endif
