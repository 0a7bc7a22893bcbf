// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_PROBE_LENTBUNDLES_H
#define NORIX_PROBE_LENTBUNDLES_H

#include "probe/bundleCalls.h"

#include <bundle.h>

#include <cstdint>

namespace norix::probe {

/// The bundles that callbacks are given. They are lent: the application must not free them, nor use
/// them once the callback has returned.
///
/// To tell a late use from the use of another bundle at the same address, the last few small ones
/// are really freed only when further requests have come.

/// A bundle is lent while this object lives.
class Loan {
public:
  Loan(bundle *lent, std::uint64_t request, const RequestTexts &texts);
  ~Loan();
  Loan(const Loan &) = delete;
  Loan &operator=(const Loan &) = delete;

private:
  bundle *_lent;
};

/// Reports the use of a bundle whose loan is over.
void noteUse(const bundle *used, const char *function);

/// Whether bundle_free() has to stop here: the application frees what was only lent to it, which is
/// reported, or the library frees what is kept for a while.
bool keepsFromFreeing(bundle *freed, bool isByLibrary);

/// A new bundle at this address: it is no earlier one.
void noteCreated(const bundle *created);

} // namespace norix::probe

#endif
