// SPDX-License-Identifier: Apache-2.0
#include "soak/garbage.h"

#include "integration/harness/wire.h"

#include <algorithm>

namespace soak {
namespace {

using integration::helloFrame;
using norix::assistant::actionRequest;
using norix::assistant::stateRequest;

constexpr const char *kSender = "org.example.stranger";
constexpr std::size_t kLongestNoise = 3000;

std::string noise(Dice &dice) {
  std::string bytes(1 + dice.below(kLongestNoise), '\0');
  std::generate(bytes.begin(), bytes.end(), [&dice] { return static_cast<char>(dice.below(256)); });
  return bytes;
}

void changeBytes(Dice &dice, std::string &bytes) {
  const std::size_t changes = 1 + dice.below(8);
  for (std::size_t i = 0; i < changes; ++i) {
    bytes[dice.below(bytes.size())] = static_cast<char>(dice.below(256));
  }
}

void repeatSome(Dice &dice, std::string &bytes) {
  const std::size_t from = dice.below(bytes.size());
  bytes.insert(dice.below(bytes.size()), bytes.substr(from, 1 + dice.below(64)));
}

void leaveSomeOut(Dice &dice, std::string &bytes) {
  bytes.erase(dice.below(bytes.size()), 1 + dice.below(16));
}

void mutate(Dice &dice, std::string &bytes) {
  switch (dice.below(3)) {
  case 0:
    return changeBytes(dice, bytes);
  case 1:
    return repeatSome(dice, bytes);
  default:
    return leaveSomeOut(dice, bytes);
  }
}

// A frame of random bytes, with a correct or a wrong length.
std::string frameOfNoise(Dice &dice) {
  const auto kind = static_cast<std::uint32_t>(dice.below(6));
  return dice.chance(500) ? support::frame(kind, noise(dice))
                          : support::bytes(static_cast<std::uint32_t>(dice.seed()))
                                + support::bytes(kind) + noise(dice);
}

} // namespace

Speech properSpeech(const std::string &instance, const std::string &sender) {
  Speech speech{helloFrame(RPC_PORT_PORT_MAIN, instance, sender),
                helloFrame(RPC_PORT_PORT_CALLBACK, instance, sender)};
  speech.main += integration::setCallbackFrame();
  speech.main += integration::requestFrame(stateRequest());
  speech.main += integration::requestFrame(actionRequest("lightOn"));
  return speech;
}

Speech garbage(Dice &dice, const std::string &instance) {
  Speech speech = properSpeech(instance, kSender);
  switch (dice.below(5)) {
  case 0:
    return {noise(dice), noise(dice)};
  case 1:
    mutate(dice, speech.callback);
    return speech;
  case 2:
    speech.main += frameOfNoise(dice);
    return speech;
  case 3:
    speech.callback += frameOfNoise(dice);
    return speech;
  default:
    mutate(dice, speech.main);
    return speech;
  }
}

Speech unfinishedSpeech(Dice &dice, const std::string &instance) {
  Speech speech = properSpeech(instance, kSender);
  speech.main.resize(dice.below(speech.main.size()));
  speech.callback.resize(dice.chance(300) ? dice.below(speech.callback.size()) : 0);
  return speech;
}

} // namespace soak
