// SPDX-License-Identifier: Apache-2.0
//
// Answers through a request that is spent; see types.cpp. GCC sees them in an optimised build.
#include <norix.hpp>

#include <utility>

#ifdef NOTHING_REFUSED
#define REFUSED(...)
#else
#define REFUSED(...) __VA_ARGS__
#endif

void answersTwice(norix::Request request);
void answersWhatWasMovedAway(norix::Request request);
void answersInALambda(norix::Request request);
void answersOneOfTwo(norix::Request one, norix::Request other, bool isOne);

// clang-format off
void answersTwice(norix::Request request) {
  static_cast<void>(request.answer("once"));
  REFUSED(static_cast<void>(request.answer("twice"));) // refused: SPENT
}

void answersWhatWasMovedAway(norix::Request request) {
  const auto later = [moved = std::move(request)] { return moved.isCurrent(); };
  REFUSED(static_cast<void>(request.answer("moved"));) // refused: SPENT
  static_cast<void>(later());
}
// clang-format on

// Nothing here is wrong, and no compiler may think so.
void answersInALambda(norix::Request request) {
  auto later = [moved = std::move(request)]() mutable {
    if (moved.isCurrent()) {
      static_cast<void>(moved.answer("later"));
    }
  };
  later();
}

void answersOneOfTwo(norix::Request one, norix::Request other, bool isOne) {
  norix::Request &chosen = isOne ? one : other;
  if (!chosen.canBeAnswered() || !chosen.isCurrent()) {
    one = std::move(other);
    static_cast<void>(one.answer("the other"));
    return;
  }
  static_cast<void>(chosen.answer("one"));
}
