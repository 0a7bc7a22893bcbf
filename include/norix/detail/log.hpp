/* SPDX-License-Identifier: Apache-2.0 */
#ifndef NORIX_DETAIL_LOG_HPP
#define NORIX_DETAIL_LOG_HPP

#include <dlog.h>

namespace norix {
namespace detail {

// The tag of this interface's lines in the platform log; those of libnorix.so have their own. All
// lines have the priority of an error: devices drop lower ones, and each says that something was
// lost.
constexpr const char *kLogTag = "NORIX-CPP";

} // namespace detail
} // namespace norix

#endif
