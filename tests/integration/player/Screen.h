// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_INTEGRATION_PLAYER_SCREEN_H
#define TESTS_INTEGRATION_PLAYER_SCREEN_H

#include "support/Process.h"
#include "support/TemporaryFolder.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace integration {

/// What is seen at one moment: a pixel is 0xRRGGBB.
struct Picture {
  std::size_t width = 0;
  std::vector<std::uint32_t> pixels;

  std::uint32_t at(std::size_t x, std::size_t y) const { return pixels.at(y * width + x); }
  /// How many pixels have this colour.
  long count(std::uint32_t colour) const;
};

inline bool operator==(const Picture &a, const Picture &b) {
  return a.width == b.width && a.pixels == b.pixels;
}
inline bool operator!=(const Picture &a, const Picture &b) {
  return !(a == b);
}

/// A screen in memory, as large as one window, which a window manager gives all of it.
class Screen {
public:
  Screen(int width, int height);

  /// What DISPLAY is for those who are to draw on it.
  const std::string &display() const { return _display; }
  /// Ends the server, which removes its socket and its lock.
  void close();
  Picture picture() const;
  /// Waits until what is seen is as wanted. @return What was seen last, wanted or not
  Picture await(const std::function<bool(const Picture &)> &isWanted) const;

private:
  support::TemporaryFolder _folder;
  support::Process _server;
  std::string _display;
  support::Process _windowManager;
};

} // namespace integration

#endif
