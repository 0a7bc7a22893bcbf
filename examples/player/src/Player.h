// SPDX-License-Identifier: Apache-2.0
#ifndef EXAMPLE_PLAYER_PLAYER_H
#define EXAMPLE_PLAYER_PLAYER_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <utility>

/** @brief A track; its cover is a colour, 0xRRGGBB. */
struct Track {
  const char *title;
  const char *artist;
  int seconds;
  unsigned cover;
};

/** @brief What the application is about. It knows neither windows nor voices, and plays in silence.
 */
class Player {
public:
  static constexpr int kMaxVolume = 100;

  /** @brief Says who is called after every change. */
  void onChanged(std::function<void()> changed) { _changed = std::move(changed); }

  void play() { set(_isPlaying, true); }
  void pause() { set(_isPlaying, false); }
  void setVolume(int volume) { set(_volume, volume); }
  /** @brief Goes to a second of the track, at most to its end. */
  void seek(int second) { set(_position, std::clamp(second, 0, track().seconds)); }
  void next() { change(_track + 1); }
  void previous() { change(_track + kTracks.size() - 1); }

  /** @brief A second has passed. */
  void tick() {
    if (_isPlaying && _position == track().seconds) {
      next();
    } else if (_isPlaying) {
      seek(_position + 1);
    }
  }

  bool isPlaying() const { return _isPlaying; }
  int volume() const { return _volume; }
  int position() const { return _position; }
  const Track &track() const { return kTracks.at(_track); }

private:
  static constexpr std::array<Track, 3> kTracks{
      {{"Morning Walk", "The Early Birds", 185, 0x2f6f8f},
       {"Rain on Tin", "Kitchen Quartet", 242, 0x8f4f2f},
       {"The Last Train", "North Platform", 207, 0x4f3f7f}}};

  template <class Value>
  void set(Value &value, Value wanted) {
    value = wanted;
    if (_changed) {
      _changed();
    }
  }

  void change(std::size_t track) {
    _position = 0;
    _isPlaying = true;
    set(_track, track % kTracks.size());
  }

  std::function<void()> _changed;
  bool _isPlaying = false;
  int _volume = 40;
  int _position = 0;
  std::size_t _track = 0;
};

#endif
