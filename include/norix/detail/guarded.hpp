/* SPDX-License-Identifier: Apache-2.0 */
#ifndef NORIX_DETAIL_GUARDED_HPP
#define NORIX_DETAIL_GUARDED_HPP

#include <exception>
#include <utility>

namespace norix {
namespace detail {

// Runs the work; an exception ends here, and what it says goes to the second function. The only
// place that knows whether the application is compiled with exceptions. Always inlined: every
// request passes two of these, and a call of its own would cost more than the work around it.
template <class Work, class Failed>
__attribute__((always_inline)) inline auto guarded(Work &&work, Failed &&failed)
    -> decltype(std::forward<Work>(work)()) {
#ifdef __cpp_exceptions
  try {
    return std::forward<Work>(work)();
  } catch (const std::exception &exception) {
    return std::forward<Failed>(failed)(exception.what());
  } catch (...) {
    return std::forward<Failed>(failed)("an exception that is not derived from std::exception");
  }
#else
  static_cast<void>(failed);
  return std::forward<Work>(work)();
#endif
}

} // namespace detail
} // namespace norix

#endif
