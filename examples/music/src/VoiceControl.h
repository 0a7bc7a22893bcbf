// SPDX-License-Identifier: Apache-2.0
#ifndef EXAMPLE_MUSIC_VOICE_CONTROL_H
#define EXAMPLE_MUSIC_VOICE_CONTROL_H

#include "Player.h"

#include <Ecore.h>
#include <norix.hpp>
#include <optional>

/** @brief Lets the assistant drive a player. */
class VoiceControl {
public:
  explicit VoiceControl(Player &player) : _player(player) {}

  /** @brief Makes the player reachable. @throw norix::Error */
  void start();
  /** @brief Takes it away: from then on nothing calls this object any more. */
  void stop();

  /** @brief What the assistant may ask for, who answers, and what is declared of it. */
  void registerAll(norix::Assistant &assistant);

private:
  static Eina_Bool onTrackLoaded(void *self);

  void registerState(norix::Assistant &assistant);
  void registerPlaying(norix::Assistant &assistant);
  void registerNext(norix::Assistant &assistant);

  Player &_player;
  std::optional<norix::Assistant> _assistant;
  // The request for the next track that waits for its answer, and what it waits for.
  std::optional<norix::Request> _nextRequest;
  Ecore_Timer *_nextTimer = nullptr;
};

#endif
