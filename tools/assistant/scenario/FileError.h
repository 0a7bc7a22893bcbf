// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_SCENARIO_FILEERROR_H
#define NORIX_ASSISTANT_SCENARIO_FILEERROR_H

#include <stdexcept>
#include <string>

namespace norix::assistant::scenario {

/// A place in a file; both count from 1.
struct Position {
  int line = 1;
  int column = 1;
};

/// A scenario file that cannot be used; what() says where, what is wrong and what was expected, as
/// compilers do: "volume.yaml:3:5: …".
class FileError : public std::runtime_error {
public:
  FileError(const std::string &file, Position position, const std::string &text)
      : std::runtime_error(file + ":" + std::to_string(position.line) + ":"
                           + std::to_string(position.column) + ": " + text) {}
  /// For a file that cannot be read at all.
  FileError(const std::string &file, const std::string &text)
      : std::runtime_error(file + ": " + text) {}
};

} // namespace norix::assistant::scenario

#endif
