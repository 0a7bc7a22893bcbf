// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_COMMON_CALLBACK_H
#define PLATFORM_RPC_PORT_COMMON_CALLBACK_H

#include <utility>

namespace platform::rpc_port {

template <typename Signature>
class Callback;

/// A member function and the object that it is called on. The form in which a part of the transport
/// calls back the part that uses it. Two pointers, so it is copied and called without allocating;
/// the object must outlive it.
template <typename Result, typename... Arguments>
class Callback<Result(Arguments...)> {
public:
  /// @tparam Member The member function, as `&Class::function`.
  template <auto Member, typename Object>
  static Callback to(Object &object) {
    return Callback(&object, [](void *target, Arguments... arguments) -> Result {
      return (static_cast<Object *>(target)->*Member)(std::forward<Arguments>(arguments)...);
    });
  }

  Result operator()(Arguments... arguments) const {
    return _function(_object, std::forward<Arguments>(arguments)...);
  }

private:
  using Function = Result (*)(void *object, Arguments... arguments);

  Callback(void *object, Function function) : _object(object), _function(function) {}

  void *_object;
  Function _function;
};

} // namespace platform::rpc_port

#endif
