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
  registerState(assistant);
  registerPlaying(assistant);
  registerNext(assistant);

  // Whatever else comes is answered before the callable is called.
  assistant.onAction(norix::Action("musicVolume")
                         .title("Set the volume")
                         .description("Sets the volume of the music.")
                         .utterance("set the volume to {volume}")
                         .example(R"({"volume": 40})"),
                     norix::param<int>("volume")
                         .description("The volume, from 0, silent, to 100")
                         .range(0, Player::kMaxVolume),
                     [this](int volume) {
                       _player.setVolume(volume);
                       return "The volume is " + std::to_string(volume);
                     });

  // What not to do: this request is never answered. The log says so, and after 30 seconds the
  // assistant is told that it timed out.
  assistant.onAction(
      norix::Action("musicSing")
          .description("Is never answered; shows what an assistant gets from an application that "
                       "stays silent."),
      [](norix::Request /*request*/) {
        dlog_print(DLOG_INFO, "MUSIC", "this player does not sing, or say so");
      });
}

// A state is whatever converts to JSON.
void VoiceControl::registerState(norix::Assistant &assistant) {
  assistant.onState(
      [this] {
        return nlohmann::json{{"playing", _player.isPlaying()},
                              {"title", _player.title()},
                              {"volume", _player.volume()}};
      },
      norix::State("What the player does: whether it plays, the title, the volume")
          .form(R"({"type": "object",
                    "properties": {"playing": {"type": "boolean"},
                                   "title": {"type": "string", "minLength": 1},
                                   "volume": {"type": "integer", "minimum": 0, "maximum": 100}},
                    "required": ["playing", "title", "volume"],
                    "additionalProperties": false})")
          .example(R"({"playing": true, "title": "Rain on Tin", "volume": 40})"));
}

void VoiceControl::registerPlaying(norix::Assistant &assistant) {
  assistant.onAction(norix::Action("musicPlay")
                         .title("Play")
                         .description("Plays the current title, and tells its name.")
                         .utterance("play some music")
                         .utterance("go on"),
                     [this] {
                       _player.play();
                       return "Playing " + _player.title();
                     });
  assistant.onAction(norix::Action("musicPause")
                         .title("Pause")
                         .description("Pauses the music; musicPlay goes on with it.")
                         .utterance("pause the music")
                         .utterance("be quiet"),
                     [this] {
                       _player.pause();
                       return "The music is paused";
                     });
}

// An answer may come later, within 30 seconds: keep the request. Never wait inside a callable: the
// main loop stands still meanwhile.
void VoiceControl::registerNext(norix::Assistant &assistant) {
  assistant.onAction(
      norix::Action("musicNext")
          .title("Next title")
          .description("Goes to the next title and plays it. Loading takes half a second.")
          .utterance("next song")
          .utterance("skip this one"),
      [this](norix::Request request) {
        ecore_timer_del(_nextTimer);
        _nextRequest = std::move(request);
        _nextTimer = ecore_timer_add(kLoadingSeconds, onTrackLoaded, this);
        if (_nextTimer == nullptr) {
          _nextRequest->answer("The next track cannot be loaded");
        }
      });
}

Eina_Bool VoiceControl::onTrackLoaded(void *self) {
  VoiceControl &voice = *static_cast<VoiceControl *>(self);
  voice._nextTimer = nullptr; // Ends by itself, by the value returned.
  voice._player.next();

  voice._nextRequest->answer("Playing " + voice._player.title());
  return ECORE_CALLBACK_CANCEL;
}
