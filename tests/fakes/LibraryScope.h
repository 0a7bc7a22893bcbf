// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FAKES_LIBRARY_SCOPE_H
#define NORIX_FAKES_LIBRARY_SCOPE_H

namespace fake {

// Whose code runs at the moment: the library's, or the test's and the fakes'. Only what happens
// inside the library counts in the journal of allocations, in the faults and in the leak check.
bool runningLibrary();

// Sets it for a block, whatever way the block is left.
class LibraryScope {
public:
  explicit LibraryScope(bool inside);
  ~LibraryScope();

  // Whether the library ran before this block.
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

// Runs a call into the library that does not go through one of its exported functions.
template <typename Call>
decltype(auto) library(Call call) {
  const InsideLibrary inside;
  return call();
}

} // namespace fake

#endif
