// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_LOOP_GLIB_SOURCE_H
#define PLATFORM_RPC_PORT_LOOP_GLIB_SOURCE_H

#include "common/Callback.h"

namespace platform::rpc_port {

/// Serves a descriptor or a delay when the application runs a GMainLoop instead of Ecore's. Beside
/// the same registration with Ecore: a source of GLib's default context, which keeps quiet while
/// Ecore polls that context, and on threads other than the one that started it. In a process that
/// has not loaded GLib it does nothing.
class GLibSource {
public:
  /// Called with poll()'s events, or 0 for a delay. It may stop or destroy the source.
  using Function = Callback<void(int events)>;

  explicit GLibSource(Function function) : _function(function) {}
  ~GLibSource() { stop(); }
  GLibSource(const GLibSource &) = delete;
  GLibSource &operator=(const GLibSource &) = delete;

  /// Calls for every event; `events` are poll()'s.
  void watch(int descriptor, int events);
  /// Changes what a watch calls for.
  void setEvents(int events);
  /// Calls once, after so many seconds, and then for as long as it is not stopped.
  void delay(double seconds);
  void stop();

private:
  friend struct SourceCalls;
  struct Source;

  void start(int descriptor, int events, double seconds);

  Function _function;
  Source *_source = nullptr;
};

} // namespace platform::rpc_port

#endif
