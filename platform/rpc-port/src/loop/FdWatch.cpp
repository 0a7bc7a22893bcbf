// SPDX-License-Identifier: Apache-2.0
#include "loop/FdWatch.h"

#include "common/log.h"

#include <poll.h>

namespace platform::rpc_port {

namespace {

LinkedList<FdWatch> running;

// poll() reports a hang-up and an error unasked.
int toPollEvents(bool reading, bool writing) {
  return (reading ? POLLIN : 0) | (writing ? POLLOUT : 0);
}

} // namespace

bool FdWatch::start(int descriptor, bool reading, bool writing) {
  stop();
  _flags = toFlags(reading, writing);
  _handler =
      ecore_main_fd_handler_add(descriptor, _flags, &FdWatch::onReady, this, nullptr, nullptr);
  if (_handler == nullptr) {
    dlog_print(DLOG_ERROR, kLogTag,
               "Ecore does not watch descriptor %d: use ports on the main loop's thread only",
               descriptor);
    return false;
  }
  running.add(*this);
  _source.watch(descriptor, toPollEvents(reading, writing));
  return true;
}

void FdWatch::update(bool reading, bool writing) {
  const Ecore_Fd_Handler_Flags flags = toFlags(reading, writing);
  if (_handler == nullptr || flags == _flags) {
    return;
  }
  _flags = flags;
  ecore_main_fd_handler_active_set(_handler, flags);
  _source.setEvents(toPollEvents(reading, writing));
}

void FdWatch::stop() {
  if (_handler != nullptr) {
    ecore_main_fd_handler_del(_handler);
    _handler = nullptr;
    running.remove(*this);
    _source.stop();
  }
}

void FdWatch::stopAll() {
  while (FdWatch *watch = running.first()) {
    watch->stop();
  }
}

Eina_Bool FdWatch::onReady(void *data, Ecore_Fd_Handler *handler) {
  const auto isActive = [handler](Ecore_Fd_Handler_Flags flag) {
    return ecore_main_fd_handler_active_get(handler, flag) != EINA_FALSE;
  };
  const Events events{isActive(ECORE_FD_READ), isActive(ECORE_FD_WRITE), isActive(ECORE_FD_ERROR)};

  static_cast<FdWatch *>(data)->_ready(events);
  // Ecore ignores this result for a handler that was deleted during the call.
  return ECORE_CALLBACK_RENEW;
}

void FdWatch::onPolled(int events) {
  const bool hasGone = (events & (POLLHUP | POLLERR | POLLNVAL)) != 0;
  _ready({hasGone || (events & POLLIN) != 0, hasGone || (events & POLLOUT) != 0, hasGone});
}

Ecore_Fd_Handler_Flags FdWatch::toFlags(bool reading, bool writing) {
  const int flags = ECORE_FD_ERROR | (reading ? ECORE_FD_READ : 0) | (writing ? ECORE_FD_WRITE : 0);
  return static_cast<Ecore_Fd_Handler_Flags>(flags);
}

} // namespace platform::rpc_port
