// SPDX-License-Identifier: Apache-2.0
#include "peers/BlockingAsker.h"

#include "support/sockets.h"

#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace benchmarks {

RequestBytes requestFor(std::size_t answerSize) {
  RequestBytes request{};
  const auto wanted = static_cast<std::uint32_t>(answerSize);
  std::memcpy(request.data(), &wanted, sizeof wanted);
  return request;
}

std::size_t answerSizeOf(const RequestBytes &request) {
  std::uint32_t wanted = 0;
  std::memcpy(&wanted, request.data(), sizeof wanted);
  return wanted;
}

BlockingAsker::BlockingAsker(const std::string &kind)
    : _process(serveCommand(kind, {_requests.others(), _answers.others()})) {
  _requests.handOver();
  _answers.handOver();
}

void BlockingAsker::exchange(std::size_t answerSize, int count, Samples &samples) {
  const RequestBytes request = requestFor(answerSize);
  _answer.resize(answerSize);

  auto start = Samples::Clock::now();
  for (int i = 0; i < count; ++i) {
    if (!support::sendAll(_requests.own(), request.data(), request.size())
        || !support::receiveAll(_answers.own(), _answer.data(), _answer.size())) {
      throw std::runtime_error("the other process has gone");
    }
    start = samples.addSince(start);
  }
}

} // namespace benchmarks
