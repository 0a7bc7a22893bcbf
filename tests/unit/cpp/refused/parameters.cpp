// SPDX-License-Identifier: Apache-2.0
//
// Parameters that the compiler refuses; see types.cpp.
#include <norix/json.hpp>

#ifdef NOTHING_REFUSED
#define REFUSED(...)
#else
#define REFUSED(...) __VA_ARGS__
#endif

struct Song {};

void registers(norix::Assistant &assistant);

// clang-format off
void registers(norix::Assistant &assistant) {
  assistant.onAction("right", norix::param<int>("volume"), [](int) { return "on"; });
  REFUSED(assistant.onAction("play", norix::param<int>("volume"), [](const Song &) { return "on"; });) // refused: cannot be called with a request
  REFUSED(assistant.onAction("play", norix::param<int>("volume"), [] { return "on"; });) // refused: cannot be called with a request
  REFUSED(assistant.onAction("play", norix::param<int>("volume"), [](int) {});) // refused: neither returns an answer nor takes a norix::Request
  REFUSED(assistant.onAction("play", norix::param<int>("volume"), [](norix::Request &, int) {});) // refused: takes norix::Request by reference; take it by value
  REFUSED(assistant.onAction("play", norix::param<int>("volume"), [](norix::Request, int) { return "on"; });) // refused: takes a norix::Request and returns something as well
  REFUSED(assistant.onAction("play", norix::param<int>("volume"), [](auto volume) { return std::to_string(volume); });) // refused: this callable is generic
  REFUSED(assistant.onAction("play", norix::param<int>("volume"), [](auto... volume) { return std::to_string((volume + ...)); });) // refused: this callable is generic
  REFUSED(assistant.onAction("play", norix::param<int>("volume"));) // refused: and one callable last
  REFUSED(assistant.onAction("play", norix::param<double>("volume"), norix::param<int>("speed"));) // refused: and one callable last
  REFUSED(static_cast<void>(norix::param<std::string>("title").range("a", "b"));) // refused: range() is for numbers
  REFUSED(static_cast<void>(norix::param<int>("volume").length(1, 2));) // refused: length() is for texts and lists
  REFUSED(static_cast<void>(norix::param<std::optional<int>>("volume").orElse(3));) // refused: a std::optional parameter has no other value
  REFUSED(static_cast<void>(norix::param<std::vector<bool>>("flags"));) // refused: a std::vector<bool> is no list of values
  REFUSED(static_cast<void>(norix::param<Song>("song"));) // refused: a parameter is a bool, a number
}
// clang-format on
