// SPDX-License-Identifier: Apache-2.0
#ifndef EXAMPLE_MUSIC_PLAYER_H
#define EXAMPLE_MUSIC_PLAYER_H

#include <array>
#include <cstddef>
#include <string>

/** @brief What the application is about. It knows nothing of voices, and plays in silence. */
class Player {
public:
  static constexpr int kMaxVolume = 100;

  void play() { _isPlaying = true; }
  void pause() { _isPlaying = false; }
  void next() {
    _track = (_track + 1) % kTitles.size();
    _isPlaying = true;
  }
  void setVolume(int volume) { _volume = volume; }

  bool isPlaying() const { return _isPlaying; }
  int volume() const { return _volume; }
  std::string title() const { return kTitles.at(_track); }

private:
  static constexpr std::array<const char *, 3> kTitles{"Morning Walk", "Rain on Tin",
                                                       "The Last Train"};

  bool _isPlaying = true;
  int _volume = 40;
  std::size_t _track = 0;
};

#endif
