// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_CONNECTION_EVENT_HANDLERS_H
#define PLATFORM_RPC_PORT_CONNECTION_EVENT_HANDLERS_H

#include <cstddef>
#include <vector>

namespace platform::rpc_port {

/// The handlers that the application has added for one event, in that order.
template <typename Callback>
class EventHandlers {
public:
  void add(Callback callback, void *userData) { _handlers.push_back({callback, userData}); }
  bool empty() const { return _handlers.empty(); }

  /// Calls `call(callback, userData)` for each handler until a call returns false. A handler may
  /// add others: they are called too.
  template <typename Call>
  void each(Call call) const {
    for (std::size_t i = 0; i < _handlers.size(); ++i) {
      const Handler handler = _handlers[i];
      if (!call(handler.callback, handler.userData)) {
        return;
      }
    }
  }

private:
  struct Handler {
    Callback callback;
    void *userData;
  };

  std::vector<Handler> _handlers;
};

} // namespace platform::rpc_port

#endif
