// SPDX-License-Identifier: Apache-2.0
//
// The bytes of a peer on one socket:
//   which greeting is due, the size of the pieces they come in, the size of the raw reads, the
//   bytes
// However a stream is cut, the same frames have to come of it.
#include "support/Input.h"
#include "support/check.h"

#include "wire/FrameReader.h"

#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace {

using fuzz::check;
using platform::rpc_port::Buffer;
using platform::rpc_port::Frame;
using platform::rpc_port::FrameKind;
using platform::rpc_port::FrameReader;
using platform::rpc_port::Inbox;

std::string_view textOf(const Buffer &buffer) {
  return {reinterpret_cast<const char *>(buffer.data()), buffer.size()};
}

// Feeds the reader pieces of at most that size. @return false when it refuses the bytes.
bool feed(std::string_view bytes, std::size_t pieceSize, FrameKind greeting, Inbox &inbox) {
  FrameReader reader(greeting);
  while (!bytes.empty()) {
    const FrameReader::Space space = reader.space();
    check(space.size > 0, "a reader always has room");
    const std::size_t size = std::min({space.size, pieceSize, bytes.size()});
    std::memcpy(space.bytes, bytes.data(), size);
    bytes.remove_prefix(size);
    if (!reader.take(size, inbox)) {
      return false;
    }
  }
  check(reader.isGreeted() || inbox.empty(), "nothing comes before the greeting");
  return true;
}

void checkOrder(const std::vector<Frame> &frames, FrameKind greeting) {
  for (std::size_t i = 0; i < frames.size(); ++i) {
    const FrameKind kind = frames[i].kind;
    const bool isGreeting = kind == FrameKind::Hello || kind == FrameKind::Welcome;
    check(i == 0 ? kind == greeting : !isGreeting, "the greeting is the first frame and no other");
    check(!frames[i].payload.empty(), "no frame is empty");
  }
}

std::vector<Frame> takeAll(Inbox &inbox) {
  std::vector<Frame> frames;
  while (!inbox.empty()) {
    const auto number = inbox.frontNumber();
    frames.push_back(inbox.pop());
    check(inbox.frontNumber() == number + 1, "frames are numbered in their order");
  }
  return frames;
}

// Raw frames that follow each other are one stream to the reader.
void readRaw(Inbox &inbox, const std::vector<Frame> &frames, std::size_t size) {
  std::string expected;
  for (std::size_t i = 1; i < frames.size() && frames[i].kind == FrameKind::Raw; ++i) {
    expected += textOf(frames[i].payload);
  }
  (void)inbox.pop(); // The greeting.
  std::string read;
  std::vector<unsigned char> bytes(size);
  while (inbox.readRaw(bytes.data(), bytes.size())) {
    read.append(bytes.begin(), bytes.end());
  }
  check(std::string_view(expected).substr(0, read.size()) == read, "raw reads follow the stream");
  check(expected.size() - read.size() < size, "they stop when so much is not there");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  fuzz::Input input(data, size);
  const FrameKind greeting = input.below(2) == 0 ? FrameKind::Hello : FrameKind::Welcome;
  const std::size_t pieceSize = 1 + input.number();
  const std::size_t readSize = 1 + input.below(255);
  const std::string_view bytes = input.rest();

  Inbox whole;
  Inbox pieces;
  Inbox raw;
  const bool isAccepted = feed(bytes, bytes.size(), greeting, whole);
  check(feed(bytes, pieceSize, greeting, pieces) == isAccepted, "pieces change no verdict");
  (void)feed(bytes, pieceSize, greeting, raw);

  const std::vector<Frame> frames = takeAll(whole);
  const std::vector<Frame> again = takeAll(pieces);
  check(frames.size() == again.size(), "pieces change no frame");
  for (std::size_t i = 0; i < frames.size(); ++i) {
    check(frames[i].kind == again[i].kind && textOf(frames[i].payload) == textOf(again[i].payload),
          "pieces change no frame");
  }
  checkOrder(frames, greeting);
  if (!frames.empty()) {
    readRaw(raw, frames, readSize);
  }
  return 0;
}
