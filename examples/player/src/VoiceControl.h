// SPDX-License-Identifier: Apache-2.0
#ifndef EXAMPLE_PLAYER_VOICE_CONTROL_H
#define EXAMPLE_PLAYER_VOICE_CONTROL_H

#include "Player.h"

#include <functional>
#include <norix.hpp>
#include <string>
#include <utility>

/** @brief What the assistant may ask of a player, and who answers. */
class VoiceControl {
public:
  /** @brief Called with each request and its answer. */
  using Told = std::function<void(const std::string &request, const std::string &answer)>;

  /** @brief Prints the declarations if the program was started for that, when it is built. */
  static bool printsDeclarations(int argc, char **argv);

  VoiceControl(Player &player, Told told) : _player(player), _told(std::move(told)) {}

  /** @brief The callables refer to this object, which has to live as long as they do. */
  void registerAll(norix::Assistant &assistant);

private:
  void registerTransport(norix::Assistant &assistant);
  void registerSettings(norix::Assistant &assistant);
  std::string tell(const std::string &request, std::string answer) const;

  Player &_player;
  Told _told;
};

#endif
