// SPDX-License-Identifier: Apache-2.0
#include "support/ScopedVariable.h"

#include <cstdlib>
#include <utility>

namespace support {

ScopedVariable::ScopedVariable(std::string name, const std::string &value)
    : _name(std::move(name)) {
  const char *before = std::getenv(_name.c_str());
  if (before != nullptr) {
    _before = before;
  }
  setenv(_name.c_str(), value.c_str(), 1);
}

ScopedVariable::~ScopedVariable() {
  if (_before) {
    setenv(_name.c_str(), _before->c_str(), 1);
  } else {
    unsetenv(_name.c_str());
  }
}

} // namespace support
