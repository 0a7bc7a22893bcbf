// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FAKES_LIBRARY_SCOPE_H
#define NORIX_FAKES_LIBRARY_SCOPE_H

namespace fake {

/// Whether the library's code is running, and not that of the test or the fakes. Only what happens
/// inside the library counts in the journal of allocations, in the faults and in the leak check.
bool runningLibrary();

/// Sets runningLibrary() for a block and restores it at its end.
class LibraryScope {
public:
  explicit LibraryScope(bool inside);
  ~LibraryScope();

  /// Whether the library ran before this block.
  bool leftLibrary() const { return _before; }

  LibraryScope(const LibraryScope &) = delete;
  LibraryScope &operator=(const LibraryScope &) = delete;

private:
  bool _before;
};

class InsideLibrary : public LibraryScope {
public:
  InsideLibrary() : LibraryScope(true) {}
};

class OutsideLibrary : public LibraryScope {
public:
  OutsideLibrary() : LibraryScope(false) {}
};

/// Runs a call into the library that does not go through one of its exported functions.
template <typename Call>
decltype(auto) library(Call call) {
  const InsideLibrary inside;
  return call();
}

} // namespace fake

#endif
