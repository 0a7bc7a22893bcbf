// SPDX-License-Identifier: Apache-2.0
#include "common/text.h"

#include <stdexcept>

namespace norix {

std::string_view viewOf(const char *text) {
  if (text == nullptr) {
    throw std::logic_error("basic_string::_M_construct null not valid");
  }
  return text;
}

std::string textOf(const char *text) {
  return std::string(viewOf(text));
}

std::string copyAndFree(char *text) {
  const OwnedText owned(text);
  return textOf(text);
}

} // namespace norix
