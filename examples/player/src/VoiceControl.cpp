// SPDX-License-Identifier: Apache-2.0
#include "VoiceControl.h"

#include <array>
#include <cstdio>
#include <norix/json.hpp>

namespace {

constexpr int kLongestTrack = 3600;

std::string hex(unsigned colour) {
  std::array<char, 8> text{};
  (void)std::snprintf(text.data(), text.size(), "#%06x", colour);
  return text.data();
}

nlohmann::json stateOf(const Player &player) {
  const Track &track = player.track();
  return {{"title", track.title},          {"artist", track.artist},
          {"cover", hex(track.cover)},     {"playing", player.isPlaying()},
          {"position", player.position()}, {"seconds", track.seconds},
          {"volume", player.volume()}};
}

} // namespace

bool VoiceControl::printsDeclarations(int argc, char **argv) {
  Player player;
  VoiceControl voice(player, [](const std::string &, const std::string &) {});
  return norix::printsDeclarations(
      argc, argv, [&voice](norix::Assistant &assistant) { voice.registerAll(assistant); });
}

void VoiceControl::registerAll(norix::Assistant &assistant) {
  assistant.onState([this] { return stateOf(_player); },
                    norix::State("What is played, where in the track, and how loud"));
  registerTransport(assistant);
  registerSettings(assistant);
}

void VoiceControl::registerTransport(norix::Assistant &assistant) {
  assistant.onAction(norix::Action("playerPlay")
                         .title("Play")
                         .description("Plays the track from where it is.")
                         .utterance("play the music"),
                     [this] {
                       _player.play();
                       return tell("playerPlay", std::string("Playing ") + _player.track().title);
                     });
  assistant.onAction(norix::Action("playerPause")
                         .title("Pause")
                         .description("Pauses the track where it is.")
                         .utterance("pause the music"),
                     [this] {
                       _player.pause();
                       return tell("playerPause", "The music is paused");
                     });
  assistant.onAction(norix::Action("playerNext")
                         .title("Next track")
                         .description("Plays the next track, after the last the first.")
                         .utterance("next track"),
                     [this] {
                       _player.next();
                       return tell("playerNext", std::string("Playing ") + _player.track().title);
                     });
  assistant.onAction(norix::Action("playerPrevious")
                         .title("Previous track")
                         .description("Plays the previous track, before the first the last.")
                         .utterance("previous track"),
                     [this] {
                       _player.previous();
                       return tell("playerPrevious",
                                   std::string("Playing ") + _player.track().title);
                     });
}

void VoiceControl::registerSettings(norix::Assistant &assistant) {
  assistant.onAction(
      norix::Action("playerVolume")
          .title("Volume")
          .description("Sets the volume.")
          .utterance("set the volume to {volume}"),
      norix::param<int>("volume").range(0, Player::kMaxVolume).description("0 is silent"),
      [this](int volume) {
        _player.setVolume(volume);
        return tell("playerVolume " + std::to_string(volume),
                    "The volume is " + std::to_string(volume));
      });
  assistant.onAction(
      norix::Action("playerSeek")
          .title("Go to")
          .description("Goes to a second of the track; one behind its end is the end.")
          .utterance("go to second {second}"),
      norix::param<int>("second").range(0, kLongestTrack).description("counted from the start"),
      [this](int second) {
        _player.seek(second);
        return tell("playerSeek " + std::to_string(second),
                    "At second " + std::to_string(_player.position()));
      });
}

std::string VoiceControl::tell(const std::string &request, std::string answer) const {
  _told(request, answer);
  return answer;
}
