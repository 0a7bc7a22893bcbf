/* SPDX-License-Identifier: Apache-2.0 */
#ifndef NORIX_DETAIL_USEDONCE_HPP
#define NORIX_DETAIL_USEDONCE_HPP

// Lets the compiler refuse a second answer, and an answer through a moved-from request, where it
// sees both. Clang follows the object's state (-Wconsumed, which Norix::cpp passes). GCC has no
// such analysis: there an optimised build fails when the object is known to be spent. Wherever
// neither sees it, the answer is refused at run time.
#ifdef __clang__
#define NORIX_USED_ONCE __attribute__((consumable(unconsumed)))
#define NORIX_USES __attribute__((callable_when("unconsumed", "unknown"), set_typestate(consumed)))
#pragma clang diagnostic error "-Wconsumed"
#else
#define NORIX_USED_ONCE
#define NORIX_USES
#endif

namespace norix {
namespace detail {

#ifdef __clang__
constexpr void refuseSpent(bool /*isSpent*/) noexcept {}
#else
__attribute__((error("norix: this request was answered before, or was moved from: a request is "
                     "answered once, through the object that holds it"))) void
aSpentRequestIsAnswered() noexcept;

__attribute__((always_inline)) inline void refuseSpent(bool isSpent) noexcept {
  if (__builtin_constant_p(isSpent) != 0 && isSpent) {
    aSpentRequestIsAnswered();
  }
}
#endif

} // namespace detail
} // namespace norix

#endif
