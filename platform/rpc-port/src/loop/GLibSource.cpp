// SPDX-License-Identifier: Apache-2.0
#include "loop/GLibSource.h"

#include "glib/GLib.h"
#include "loop/EcoreUse.h"

#include <chrono>
#include <cmath>
#include <new>
#include <poll.h>
#include <thread>

namespace platform::rpc_port {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kNone = -1;

} // namespace

/// GLib allocates and releases it, so its members are plain.
struct GLibSource::Source {
  GSource base;
  GPollFD polled;
  Clock::time_point deadline;
  std::thread::id thread;
  GLibSource *owner; ///< Null once stopped: GLib may hold the source a little longer.

  /// @return Whether this is the application's own loop, which has to serve the source.
  bool isServedHere() const {
    return thread == std::this_thread::get_id() && !glib::isPolledByEcore(*glib::loaded());
  }
  bool isDelay() const { return polled.fd == kNone; }

  double secondsLeft() const {
    return std::chrono::duration<double>(deadline - Clock::now()).count();
  }
  bool isReady() const { return isDelay() ? secondsLeft() <= 0 : polled.revents != 0; }
};

/// The functions that GLib calls.
struct SourceCalls {
  static GLibSource::Source &of(GSource *source) {
    return *reinterpret_cast<GLibSource::Source *>(source);
  }

  static gboolean prepare(GSource *source, gint *timeout) {
    const GLibSource::Source &self = of(source);
    *timeout = kNone;
    if (self.isDelay() && self.isServedHere()) {
      const double seconds = self.secondsLeft();
      *timeout = seconds <= 0 ? 0 : static_cast<gint>(std::ceil(seconds * 1000));
    }
    return FALSE;
  }

  static gboolean check(GSource *source) {
    const GLibSource::Source &self = of(source);
    return self.isReady() && self.isServedHere() ? TRUE : FALSE;
  }

  // Noexcept: GLib is C, and its context stays locked when an exception passes through it.
  static gboolean dispatch(GSource *source, GSourceFunc /*function*/, gpointer /*data*/) noexcept {
    const GLibSource::Source &self = of(source);
    // In a forked child, this stops the parent's sources.
    EcoreUse::leaveParent();
    if (GLibSource *owner = self.owner) {
      owner->_function(self.polled.revents);
    }
    return G_SOURCE_CONTINUE;
  }

  static GSourceFuncs functions;
};

GSourceFuncs SourceCalls::functions = {prepare, check, dispatch, nullptr, nullptr, nullptr};

void GLibSource::watch(int descriptor, int events) {
  start(descriptor, events, 0);
}

void GLibSource::delay(double seconds) {
  start(kNone, 0, seconds);
}

void GLibSource::start(int descriptor, int events, double seconds) {
  stop();
  const glib::GLib *glib = glib::loaded();
  if (glib == nullptr) {
    return;
  }
  GSource *base = glib->sourceNew(&SourceCalls::functions, sizeof(Source));
  _source = reinterpret_cast<Source *>(base);
  _source->polled = {descriptor, static_cast<gushort>(events), 0};
  _source->deadline =
      Clock::now()
      + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
  new (&_source->thread) std::thread::id(std::this_thread::get_id());
  _source->owner = this;
  if (descriptor != kNone) {
    glib->sourceAddPoll(base, &_source->polled);
  }
  // A handler may run a loop of its own, which has to serve this source too.
  glib->sourceSetCanRecurse(base, TRUE);
  glib->sourceAttach(base, nullptr);
}

void GLibSource::setEvents(int events) {
  if (_source != nullptr) {
    _source->polled.events = static_cast<gushort>(events);
  }
}

void GLibSource::stop() {
  if (_source == nullptr) {
    return;
  }
  const glib::GLib &glib = *glib::loaded();
  GSource *base = &_source->base;
  _source->owner = nullptr;
  _source = nullptr;
  glib.sourceDestroy(base);
  glib.sourceUnref(base);
}

} // namespace platform::rpc_port
