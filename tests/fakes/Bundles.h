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

// The values of one key. Each is stored with zeros behind it, at least eight readable bytes in all:
// the library reads a request id of eight bytes and a handle of four whatever the size of the
// value.
struct bundle_keyval_s {
  std::string key;
  int type;
  struct Value {
    std::string storage;
    size_t size;
  };
  std::vector<Value> values;
};

struct bundle_s {
  int number;
  std::list<bundle_keyval_s> entries;

  bundle_keyval_s *find(const std::string &key);
};

namespace fake {

// The bundles that are alive.
class Bundles {
public:
  bundle *create();
  bundle *create(const Contents &contents);
  bool release(bundle *handle);
  // Null for a handle that is not alive.
  bundle *find(bundle *handle) const;

  size_t alive() const { return _alive.size(); }
  int created() const { return _created; }

private:
  std::map<const bundle *, std::unique_ptr<bundle>> _alive;
  // Freed bundles keep their address, so that a stale handle never names a new bundle.
  std::vector<std::unique_ptr<bundle>> _freed;
  int _created = 0;
};

} // namespace fake

#endif
