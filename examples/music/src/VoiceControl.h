// SPDX-License-Identifier: Apache-2.0
#ifndef EXAMPLE_MUSIC_VOICE_CONTROL_H
#define EXAMPLE_MUSIC_VOICE_CONTROL_H

#include "Player.h"

#include <Ecore.h>
#include <bundle.h>
#include <string>

/**
 * @brief Lets the assistant drive a player.
 * @details The library calls back through C functions with the pointer that was registered: static
 *          members here, which turn it into the object again.
 */
class VoiceControl {
public:
  explicit VoiceControl(Player &player) : _player(player) {}
  VoiceControl(const VoiceControl &) = delete;
  VoiceControl &operator=(const VoiceControl &) = delete;

  /** @brief Makes the player reachable. False when that failed; the log says why. */
  bool start();
  /** @brief Takes it away. Does nothing when it was not reachable. */
  void stop();

private:
  static void onState(void *request, void *self);
  static void onPlay(void *request, bundle *params, void *self);
  static void onPause(void *request, bundle *params, void *self);
  static void onNext(void *request, bundle *params, void *self);
  static void onVolume(void *request, bundle *params, void *self);
  static void onSing(void *request, bundle *params, void *self);
  static Eina_Bool onTrackLoaded(void *self);

  bool registerCallbacks();
  std::string state() const;
  std::string changeVolume(bundle *params);
  void forgetNext();

  Player &_player;
  bool _isStarted = false;
  // The request for the next track that waits for its answer, and what it waits for.
  void *_nextRequest = nullptr;
  Ecore_Timer *_nextTimer = nullptr;
};

#endif
