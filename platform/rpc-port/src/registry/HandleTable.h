// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_REGISTRY_HANDLE_TABLE_H
#define PLATFORM_RPC_PORT_REGISTRY_HANDLE_TABLE_H

#include <climits>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace platform::rpc_port {

/// The kind of object behind a handle; part of the handle's value, so that a stub's handle is never
/// taken for a port's.
enum class HandleKind : std::uintptr_t { Port = 1, Stub = 2, Proxy = 3 };

/// Maps handles, which are numbers disguised as pointers, to objects. The lower half of a handle
/// holds the kind and the index of a slot, the upper half the slot's generation, so a stale or
/// invented handle is recognised instead of dereferenced: applications keep a port's handle beyond
/// the end of its connection.
template <typename Object, HandleKind Kind>
class HandleTable {
public:
  /// @throw std::bad_alloc
  void *add(Object object) {
    const std::size_t index = takeFreeSlot();
    _slots[index].object = std::move(object);
    _slots[index].used = true;
    return toHandle(index, _slots[index].generation);
  }

  /// @return The object, or nullptr for a handle that is not, or no longer, of this table.
  Object *find(void *handle) {
    const std::size_t index = indexOf(handle);
    if (index >= _slots.size() || !_slots[index].used) {
      return nullptr;
    }
    return toHandle(index, _slots[index].generation) == handle ? &_slots[index].object : nullptr;
  }

  /// Makes the handle stale for good, and returns its object. Allocates nothing, so that
  /// connections can end without memory.
  Object remove(void *handle) {
    if (!find(handle)) {
      return Object();
    }
    Slot &slot = _slots[indexOf(handle)];
    slot.used = false;
    slot.generation = (slot.generation + 1) & kHalfMask;
    slot.nextFree = _firstFree;
    _firstFree = indexOf(handle);
    return std::exchange(slot.object, Object());
  }

private:
  static constexpr std::size_t kNone = ~std::size_t{0};

  struct Slot {
    Object object;
    std::uintptr_t generation = 1;
    bool used = false;
    std::size_t nextFree = kNone;
  };

  static constexpr unsigned kHalfBits = sizeof(std::uintptr_t) * CHAR_BIT / 2;
  static constexpr std::uintptr_t kHalfMask = (std::uintptr_t{1} << kHalfBits) - 1;
  static constexpr unsigned kKindBits = 2;

  static void *toHandle(std::size_t index, std::uintptr_t generation) {
    const auto low =
        (static_cast<std::uintptr_t>(index) << kKindBits) | static_cast<std::uintptr_t>(Kind);
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the number is never followed as a pointer.
    return reinterpret_cast<void *>((generation << kHalfBits) | low);
  }

  static std::size_t indexOf(void *handle) {
    return (reinterpret_cast<std::uintptr_t>(handle) & kHalfMask) >> kKindBits;
  }

  std::size_t takeFreeSlot() {
    if (_firstFree == kNone) {
      _slots.emplace_back();
      return _slots.size() - 1;
    }
    const std::size_t index = _firstFree;
    _firstFree = _slots[index].nextFree;
    return index;
  }

  std::vector<Slot> _slots;
  std::size_t _firstFree = kNone;
};

} // namespace platform::rpc_port

#endif
