// SPDX-License-Identifier: Apache-2.0
//
// Callables and answers that the compiler refuses. Each line with a comment "refused" is an error
// with that text; without those lines (NOTHING_REFUSED) the file compiles.
#include <norix.hpp>

#ifdef NOTHING_REFUSED
#define REFUSED(...)
#else
#define REFUSED(...) __VA_ARGS__
#endif

struct NoText {};

void registers(norix::Assistant &assistant);
void answers(norix::Request &request);

// clang-format off
void registers(norix::Assistant &assistant) {
  assistant.onState([] { return "right"; });
  REFUSED(assistant.onState([] {});) // refused: neither returns an answer nor takes a norix::Request
  REFUSED(assistant.onState([](norix::Request &) {});) // refused: takes norix::Request by reference; take it by value
  REFUSED(assistant.onState([](const norix::Request &) {});) // refused: takes norix::Request by reference; take it by value
  REFUSED(assistant.onState([](norix::Request) { return "also"; });) // refused: takes a norix::Request and returns something as well
  REFUSED(assistant.onState([](int) { return "on"; });) // refused: cannot be called with a request
  REFUSED(assistant.onState([] { return NoText(); });) // refused: an answer is a text
  REFUSED(assistant.onState(42);) // refused: cannot be called with a request
  assistant.onAction("right", [](norix::Request) {});
  REFUSED(assistant.onAction("play", [] {});) // refused: neither returns an answer nor takes a norix::Request
  REFUSED(assistant.onAction("play");) // refused: and one callable last
  REFUSED(assistant.onAction("play", 42, [] { return "on"; });) // refused: and one callable last
  REFUSED(static_cast<void>(assistant.declarations());) // refused: include <norix/json.hpp> for declarations()
}

void answers(norix::Request &request) {
  static_cast<void>(request.answer("right"));
  REFUSED(static_cast<void>(request.answer(nullptr));) // refused: null is no answer
  REFUSED(static_cast<void>(request.answer(42));) // refused: an answer is a text
}
// clang-format on

// What has no place for a text: a request has one owner, and so has the library.
static_assert(!std::is_copy_constructible_v<norix::Request>);
static_assert(!std::is_copy_assignable_v<norix::Request>);
static_assert(!std::is_default_constructible_v<norix::Request>);
static_assert(!std::is_copy_constructible_v<norix::Assistant>);
static_assert(!std::is_copy_assignable_v<norix::Assistant>);
static_assert(std::is_nothrow_move_constructible_v<norix::Request>);
static_assert(std::is_nothrow_move_constructible_v<norix::Assistant>);
