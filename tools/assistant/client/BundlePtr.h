// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLIENT_BUNDLEPTR_H
#define NORIX_ASSISTANT_CLIENT_BUNDLEPTR_H

#include <bundle.h>

#include <memory>

namespace norix::assistant {

struct BundleDeleter {
  void operator()(bundle *handle) const { bundle_free(handle); }
};

/** @brief The owner of one platform bundle. */
using BundlePtr = std::unique_ptr<bundle, BundleDeleter>;

} // namespace norix::assistant

#endif
