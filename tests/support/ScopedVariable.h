// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_SUPPORT_SCOPEDVARIABLE_H
#define NORIX_TESTS_SUPPORT_SCOPEDVARIABLE_H

#include <optional>
#include <string>

namespace support {

/// Sets an environment variable, and restores it in the end.
class ScopedVariable {
public:
  ScopedVariable(std::string name, const std::string &value);
  ~ScopedVariable();
  ScopedVariable(const ScopedVariable &) = delete;
  ScopedVariable &operator=(const ScopedVariable &) = delete;

private:
  std::string _name;
  std::optional<std::string> _before;
};

} // namespace support

#endif
