// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FAKES_BUNDLES_H
#define NORIX_FAKES_BUNDLES_H

#include "fakes/Values.h"

#include <bundle.h>

#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

/// The values of one key. Each is stored with zeros behind it, at least eight readable bytes in
/// all: the library reads a request id of eight bytes whatever the size of the value. A string
/// shorter than an int is handed out at the end of a page, before an unreadable one, so that
/// reading a handle beyond its text crashes.
struct bundle_keyval_s {
  std::string key;
  int type;
  struct Value {
    std::string storage;
    size_t size;
    std::shared_ptr<char> guarded = nullptr;

    /// The string as it is handed out.
    char *text();
  };
  std::vector<Value> values;
};

struct bundle_s {
  int number;
  std::list<bundle_keyval_s> entries;

  bundle_keyval_s *find(const std::string &key);
};

namespace fake {

/// The bundles that are alive.
class Bundles {
public:
  bundle *create();
  bundle *create(const Contents &contents);
  bool release(bundle *handle);
  /// Null for a handle that is not alive.
  bundle *find(bundle *handle) const;

  size_t alive() const { return _alive.size(); }
  int created() const { return _created; }

  /// The iterator of the latest bundle_foreach, for a test to call by itself.
  bundle_iterator_t lastIterator = nullptr;

private:
  std::map<const bundle *, std::unique_ptr<bundle>> _alive;
  /// Freed bundles keep their address, so that a stale handle never names a new bundle.
  std::vector<std::unique_ptr<bundle>> _freed;
  int _created = 0;
};

} // namespace fake

#endif
