// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FUZZ_BUNDLES_H
#define NORIX_FUZZ_BUNDLES_H

#include <bundle.h>

#include <memory>
#include <string>

namespace fuzz {

struct FreeBundle {
  void operator()(bundle *b) const { bundle_free(b); }
};
using BundlePtr = std::unique_ptr<bundle, FreeBundle>;

// Reads every byte of every value in every way there is, and checks that the ways agree.
void walk(bundle *b);

// The bundle as it travels.
std::string wireForm(bundle *b);

} // namespace fuzz

#endif
