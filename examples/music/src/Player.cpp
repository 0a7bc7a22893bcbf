// SPDX-License-Identifier: Apache-2.0
#include "Player.h"

#include <array>

namespace {

constexpr std::array<const char *, 3> kTitles{"Morning Walk", "Rain on Tin", "The Last Train"};

} // namespace

void Player::next() {
  _track = (_track + 1) % kTitles.size();
  _isPlaying = true;
}

std::string Player::title() const {
  return kTitles.at(_track);
}
