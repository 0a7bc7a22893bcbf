// SPDX-License-Identifier: Apache-2.0
#include "common/text.h"

#include <stdexcept>

namespace norix {

std::string textOf(const char *text) {
  if (text == nullptr) {
    throw std::logic_error("basic_string::_M_construct null not valid");
  }
  return text;
}

} // namespace norix
