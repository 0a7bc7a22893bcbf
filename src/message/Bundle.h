// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_MESSAGE_BUNDLE_H
#define NORIX_MESSAGE_BUNDLE_H

#include <bundle.h>

namespace rpc_port::message {

/// Owner of one platform bundle. Move-only: a copy would have to duplicate the whole bundle, and
/// nothing here needs one.
class Bundle {
public:
  explicit Bundle(bundle *handle) noexcept;
  Bundle(Bundle &&other) noexcept;
  Bundle &operator=(Bundle &&other) noexcept;
  Bundle(const Bundle &) = delete;
  Bundle &operator=(const Bundle &) = delete;
  ~Bundle();

  /// Borrowed; null when there is none.
  bundle *GetHandle() const;

private:
  bundle *_handle;
};

} // namespace rpc_port::message

#endif
