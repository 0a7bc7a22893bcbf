// SPDX-License-Identifier: Apache-2.0
#include "VoiceControl.h"

#include <dlog.h>
#include <norix/json.hpp>
#include <string>
#include <utility>

namespace {

// A state is whatever converts to JSON.
void registerState(norix::Assistant &assistant, Player &player) {
  assistant.onState(
      [&player] {
        return nlohmann::json{{"playing", player.isPlaying()},
                              {"title", player.title()},
                              {"volume", player.volume()}};
      },
      norix::State("What the player does: whether it plays, the title, the volume")
          .form(norix::formOf(norix::param<bool>("playing"),
                              norix::param<std::string>("title").length(1, 80),
                              norix::param<int>("volume").range(0, Player::kMaxVolume)))
          .example(R"({"playing": true, "title": "Rain on Tin", "volume": 40})"));
}

void registerPlaying(norix::Assistant &assistant, Player &player) {
  assistant.onAction(norix::Action("musicPlay")
                         .title("Play")
                         .description("Plays the current title, and tells its name.")
                         .utterance("play some music")
                         .utterance("go on"),
                     [&player] {
                       player.play();
                       return "Playing " + player.title();
                     });
  assistant.onAction(norix::Action("musicPause")
                         .title("Pause")
                         .description("Pauses the music; musicPlay goes on with it.")
                         .utterance("pause the music")
                         .utterance("be quiet"),
                     [&player] {
                       player.pause();
                       return "The music is paused";
                     });
}

// An answer may come later, within 30 seconds: keep the request. Never wait inside a callable: the
// main loop stands still meanwhile. What a callable owns ends with the assistant.
void registerNext(norix::Assistant &assistant, Player &player) {
  assistant.onAction(
      norix::Action("musicNext")
          .title("Next title")
          .description("Goes to the next title and plays it. Loading takes half a second.")
          .utterance("next song")
          .utterance("skip this one"),
      [&player, loading = norix::Timer()](norix::Request request) mutable {
        loading.start(0.5, [&player, request = std::move(request)]() mutable {
          player.next();
          request.answer("Playing " + player.title());
        });
      });
}

// Whatever else comes than what was declared is answered before the callable is called.
void registerVolume(norix::Assistant &assistant, Player &player) {
  assistant.onAction(norix::Action("musicVolume")
                         .title("Set the volume")
                         .description("Sets the volume of the music.")
                         .utterance("set the volume to {volume}")
                         .example(R"({"volume": 40})"),
                     norix::param<int>("volume")
                         .description("The volume, from 0, silent, to 100")
                         .range(0, Player::kMaxVolume),
                     [&player](int volume) {
                       player.setVolume(volume);
                       return "The volume is " + std::to_string(volume);
                     });
}

// What not to do: this request is never answered. The log says so, and after 30 seconds the
// assistant is told that it timed out.
void registerSinging(norix::Assistant &assistant) {
  assistant.onAction(
      norix::Action("musicSing")
          .description("Is never answered; shows what an assistant gets from an application that "
                       "stays silent."),
      [](norix::Request /*request*/) {
        dlog_print(DLOG_INFO, "MUSIC", "this player does not sing, or say so");
      });
}

} // namespace

void letDrive(norix::Assistant &assistant, Player &player) {
  registerState(assistant, player);
  registerPlaying(assistant, player);
  registerNext(assistant, player);
  registerVolume(assistant, player);
  registerSinging(assistant);
}
