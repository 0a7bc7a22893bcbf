// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_PROBE_BUNDLECALLS_H
#define NORIX_PROBE_BUNDLECALLS_H

#include <bundle.h>

#include <cstdint>

namespace norix::probe {

/// The texts of a request, borrowed from its bundle; null where it has none.
struct RequestTexts {
  const char *actionId = nullptr;
  const char *actionType = nullptr;
  const char *params = nullptr;
};

/// Reads a request without anybody noticing. That of the latest request is at hand.
RequestTexts readRequest(bundle *request);

/// bundle_free() itself.
void freeReally(bundle *freed);

} // namespace norix::probe

#endif
