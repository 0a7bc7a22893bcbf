// SPDX-License-Identifier: Apache-2.0
#include "VoiceControl.h"

#include <dlog.h>
#include <norix/json.hpp>
#include <string>
#include <utility>

static constexpr double kLoadingSeconds = 0.5;

void VoiceControl::start() {
  norix::Assistant assistant;
  registerAll(assistant);
  _assistant = std::move(assistant);
}

void VoiceControl::stop() {
  ecore_timer_del(_nextTimer);
  _nextTimer = nullptr;
  _assistant.reset();
}

void VoiceControl::registerAll(norix::Assistant &assistant) {
  assistant.onState([this] {
    return nlohmann::json{
        {"playing", _player.isPlaying()}, {"title", _player.title()}, {"volume", _player.volume()}};
  });

  assistant.onAction("musicPlay", [this] {
    _player.play();
    return "Playing " + _player.title();
  });
  assistant.onAction("musicPause", [this] {
    _player.pause();
    return "The music is paused";
  });

  // An answer may come later, within 30 seconds: keep the request. Never wait inside a callable:
  // the main loop stands still meanwhile.
  assistant.onAction("musicNext", [this](norix::Request request) {
    ecore_timer_del(_nextTimer);
    _nextRequest = std::move(request);
    _nextTimer = ecore_timer_add(kLoadingSeconds, onTrackLoaded, this);
    if (_nextTimer == nullptr) {
      _nextRequest->answer("The next track cannot be loaded");
    }
  });

  // Whatever else comes is answered before the callable is called.
  assistant.onAction("musicVolume", norix::param<int>("volume").range(0, Player::kMaxVolume),
                     [this](int volume) {
                       _player.setVolume(volume);
                       return "The volume is " + std::to_string(volume);
                     });

  // What not to do: this request is never answered. The log says so, and after 30 seconds the
  // assistant is told that it timed out.
  assistant.onAction("musicSing", [](norix::Request /*request*/) {
    dlog_print(DLOG_INFO, "MUSIC", "this player does not sing, and does not say so");
  });
}

Eina_Bool VoiceControl::onTrackLoaded(void *self) {
  VoiceControl &voice = *static_cast<VoiceControl *>(self);
  voice._nextTimer = nullptr; // Ends by itself, by the value returned.
  voice._player.next();

  voice._nextRequest->answer("Playing " + voice._player.title());
  return ECORE_CALLBACK_CANCEL;
}
