// SPDX-License-Identifier: Apache-2.0
#include "soak/Strangers.h"

#include "integration/harness/wire.h"

#include <algorithm>
#include <cerrno>
#include <sys/socket.h>
#include <utility>

namespace soak {
namespace {

using namespace std::chrono_literals;
using support::RawSocket;

constexpr Clock::duration kDeafPatience = 30s;
constexpr std::size_t kQuestionsAtOnce = 500;

// Enough requests in one text to keep a socket busy.
const std::string &manyQuestions() {
  static const std::string kQuestions = [] {
    std::string questions;
    for (std::size_t i = 0; i < kQuestionsAtOnce; ++i) {
      questions += integration::requestFrame(norix::assistant::stateRequest());
    }
    return questions;
  }();
  return kQuestions;
}

} // namespace

void Strangers::sendGarbage(const std::string &appId) {
  const Clock::duration stay = std::chrono::milliseconds(_dice.below(1000));
  if (connect(appId, garbage(_dice, "s-" + std::to_string(_number)), stay, false)) {
    ++_garbagePeers;
  }
}

void Strangers::leaveHalfOpen(const std::string &appId) {
  const Clock::duration stay = std::chrono::milliseconds(_dice.below(4000));
  if (connect(appId, unfinishedSpeech(_dice, "s-" + std::to_string(_number)), stay, false)) {
    ++_halfOpen;
  }
}

void Strangers::askWithoutReading(const std::string &appId) {
  // A sender of its own: an application answers a sender through its latest connection.
  if (!isAnybodyDeaf()
      && connect(appId, properSpeech("s-" + std::to_string(_number), "org.example.deaf"),
                 kDeafPatience, true)) {
    ++_deaf;
  }
}

bool Strangers::isAnybodyDeaf() const {
  return std::any_of(_strangers.begin(), _strangers.end(),
                     [](const Stranger &stranger) { return stranger.asksOn; });
}

bool Strangers::connect(const std::string &appId, Speech speech, Clock::duration stay,
                        bool asksOn) {
  ++_number;
  auto main = RawSocket::connectTo(integration::socketPath(appId));
  auto callback = RawSocket::connectTo(integration::socketPath(appId));
  if (!main || !callback) {
    return false;
  }
  _strangers.push_back({{std::move(main), std::move(speech.main)},
                        {std::move(callback), std::move(speech.callback)},
                        Clock::now() + stay,
                        asksOn});
  return true;
}

void Strangers::tick(Clock::time_point now) {
  const auto leaves = [this, now](Stranger &stranger) {
    const bool isOpen = speak(stranger);
    _deafDropped += stranger.asksOn && !isOpen ? 1 : 0;
    return !isOpen || now >= stranger.leaves;
  };
  _strangers.erase(std::remove_if(_strangers.begin(), _strangers.end(), leaves), _strangers.end());
}

bool Strangers::speak(Stranger &stranger) {
  if (stranger.asksOn && stranger.main.unsent.empty()) {
    stranger.main.unsent = manyQuestions();
  }
  const bool mainIsOpen = speak(stranger.main);
  return speak(stranger.callback) && mainIsOpen;
}

// Sends pieces of random size. @return false when the other side has closed.
bool Strangers::speak(Line &line) {
  while (!line.unsent.empty()) {
    const std::size_t piece = 1 + _pieces.below(line.unsent.size());
    const ssize_t sent =
        send(line.socket->descriptor(), line.unsent.data(), piece, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent < 0) {
      return errno == EAGAIN;
    }
    line.unsent.erase(0, static_cast<std::size_t>(sent));
  }
  return true;
}

} // namespace soak
