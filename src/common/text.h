// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_COMMON_TEXT_H
#define NORIX_COMMON_TEXT_H

#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

namespace norix {

/// A C text as a view and as a copy. Both throw std::logic_error for null, with the same message in
/// every C++ runtime: constructing a std::string from null is undefined in C++17.
std::string_view viewOf(const char *text);
std::string textOf(const char *text);

struct FreeText {
  void operator()(char *text) const { std::free(text); }
};

/// Owner of a text that the platform allocated for its caller.
using OwnedText = std::unique_ptr<char, FreeText>;

/// A copy of such a text, which is freed before this returns.
std::string copyAndFree(char *text);

} // namespace norix

#endif
