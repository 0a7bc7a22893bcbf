// SPDX-License-Identifier: Apache-2.0
#include "integration/player/Screen.h"

#include <endian.h>
#include <poll.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace integration {
namespace {

using Header = std::array<std::uint32_t, 25>;
// The fields of the header of an X window dump that are needed here.
constexpr std::size_t kHeaderSize = 0;
constexpr std::size_t kWidth = 4;
constexpr std::size_t kHeight = 5;
constexpr std::size_t kBytesPerLine = 12;
constexpr std::size_t kColours = 19;
constexpr std::size_t kBytesPerColour = 12;
constexpr std::uint32_t kRgb = 0xffffff;
// How long to wait before looking again.
constexpr int kPauseMs = 50;

std::string dumpIn(const std::string &path) {
  std::string dump(std::filesystem::file_size(path), '\0');
  std::ifstream(path, std::ios::binary).read(dump.data(), static_cast<long>(dump.size()));
  return dump;
}

// X window dumps begin with big-endian numbers.
Header headerOf(const std::string &dump) {
  Header header{};
  if (dump.size() < sizeof header) {
    throw std::runtime_error("the X server has written no screen yet");
  }
  std::memcpy(header.data(), dump.data(), sizeof header);
  std::transform(header.begin(), header.end(), header.begin(),
                 [](std::uint32_t field) { return be32toh(field); });
  return header;
}

} // namespace

long Picture::count(std::uint32_t colour) const {
  return std::count(pixels.begin(), pixels.end(), colour);
}

Screen::Screen(int width, int height)
    : _server({"Xvfb", "-nolisten", "tcp", "-nocursor", "-displayfd", "1", "-screen", "0",
               std::to_string(width) + "x" + std::to_string(height) + "x24", "-fbdir",
               _folder.path()}),
      _display(":" + _server.readLine()),
      _windowManager({"matchbox-window-manager", "-use_titlebar", "no"}, {{"DISPLAY", _display}}) {}

void Screen::close() {
  _server.signal(SIGTERM);
  (void)_server.wait();
}

Picture Screen::picture() const {
  const std::string dump = dumpIn(_folder / "Xvfb_screen0");
  const Header header = headerOf(dump);
  const std::size_t begin = header[kHeaderSize] + header[kColours] * kBytesPerColour;

  Picture picture{header[kWidth], {}};
  picture.pixels.resize(picture.width * header[kHeight]);
  for (std::size_t y = 0; y < header[kHeight]; ++y) {
    std::memcpy(&picture.pixels.at(y * picture.width), &dump.at(begin + y * header[kBytesPerLine]),
                picture.width * sizeof(std::uint32_t));
  }
  for (std::uint32_t &pixel : picture.pixels) {
    pixel &= kRgb;
  }
  return picture;
}

Picture Screen::await(const std::function<bool(const Picture &)> &isWanted) const {
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + std::chrono::duration<double>(support::kBound);
  Picture seen = picture();
  while (!isWanted(seen) && Clock::now() < end) {
    poll(nullptr, 0, kPauseMs);
    seen = picture();
  }
  return seen;
}

} // namespace integration
