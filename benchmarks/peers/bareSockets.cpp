// SPDX-License-Identifier: Apache-2.0
//
// The floor: what two processes pay for the bytes alone. One socket per direction, blocking calls.
#include "peers/BlockingAsker.h"
#include "support/sockets.h"

namespace benchmarks {

namespace {

constexpr const char *kName = "bare sockets";

int serve(const std::vector<std::string> &arguments) {
  const int requests = std::stoi(arguments.at(0));
  const int answers = std::stoi(arguments.at(1));
  RequestBytes request{};
  std::vector<char> answer;
  while (support::receiveAll(requests, request.data(), request.size())) {
    answer.resize(answerSizeOf(request));
    if (!support::sendAll(answers, answer.data(), answer.size())) {
      break;
    }
  }
  return 0;
}

} // namespace

PeerKind bareSockets() {
  return {kName, [](const auto & /*folder*/) { return std::make_unique<BlockingAsker>(kName); },
          serve, ""};
}

} // namespace benchmarks
