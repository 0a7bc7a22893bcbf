// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_COMMON_TEXT_H
#define NORIX_COMMON_TEXT_H

#include <cstdlib>
#include <memory>
#include <string>

namespace norix {

// A copy of a C text. Throws std::logic_error for null, with one wording whatever the C++ runtime
// (constructing a std::string from null is undefined in C++17).
std::string textOf(const char *text);

struct FreeText {
  void operator()(char *text) const { std::free(text); }
};

// A text that the platform allocated and leaves to its caller.
using OwnedText = std::unique_ptr<char, FreeText>;

} // namespace norix

#endif
