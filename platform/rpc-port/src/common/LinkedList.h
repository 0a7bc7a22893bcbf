// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_COMMON_LINKED_LIST_H
#define PLATFORM_RPC_PORT_COMMON_LINKED_LIST_H

namespace platform::rpc_port {

template <typename Object>
class LinkedList;

/// The hook of an intrusive list: the base of objects that can be in a LinkedList.
template <typename Object>
class Linked {
private:
  friend class LinkedList<Object>;

  Object *_previous = nullptr;
  Object *_next = nullptr;
};

/// An intrusive list: the objects carry the links, so adding one allocates nothing and cannot fail.
template <typename Object>
class LinkedList {
public:
  Object *first() const { return _first; }
  static Object *after(const Object &object) { return links(object)._next; }

  /// Adds the object at the end.
  void add(Object &object) {
    links(object)._previous = _last;
    (_last != nullptr ? links(*_last)._next : _first) = &object;
    _last = &object;
  }

  void remove(Object &object) {
    Linked<Object> &own = links(object);
    (own._previous != nullptr ? links(*own._previous)._next : _first) = own._next;
    (own._next != nullptr ? links(*own._next)._previous : _last) = own._previous;
    own = {};
  }

private:
  static Linked<Object> &links(Object &object) { return object; }
  static const Linked<Object> &links(const Object &object) { return object; }

  Object *_first = nullptr;
  Object *_last = nullptr;
};

} // namespace platform::rpc_port

#endif
