// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_COMMON_LINKED_LIST_H
#define PLATFORM_RPC_PORT_COMMON_LINKED_LIST_H

namespace platform::rpc_port {

template <typename Object>
class LinkedList;

/// What an object has in it to be in a LinkedList.
template <typename Object>
class Linked {
private:
  friend class LinkedList<Object>;

  Object *_previous = nullptr;
  Object *_next = nullptr;
};

/// A list of objects that exist anyway: being in it takes no memory and cannot fail.
template <typename Object>
class LinkedList {
public:
  Object *first() const { return _first; }
  static Object *after(const Object &object) { return links(object)._next; }

  void add(Object &object) {
    links(object)._next = _first;
    if (_first) {
      links(*_first)._previous = &object;
    }
    _first = &object;
  }

  void remove(Object &object) {
    Linked<Object> &own = links(object);
    (own._previous ? links(*own._previous)._next : _first) = own._next;
    if (own._next) {
      links(*own._next)._previous = own._previous;
    }
    own = {};
  }

private:
  static Linked<Object> &links(Object &object) { return object; }
  static const Linked<Object> &links(const Object &object) { return object; }

  Object *_first = nullptr;
};

} // namespace platform::rpc_port

#endif
