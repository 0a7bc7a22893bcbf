// SPDX-License-Identifier: Apache-2.0
#include "glib/EcorePolling.h"

#include "glib/GLib.h"

#include <Ecore.h>
#include <algorithm>
#include <cerrno>
#include <ctime>
#include <poll.h>
#include <sys/select.h>
#include <utility>
#include <vector>

namespace platform::glib {

namespace {

static_assert(sizeof(GPollFD) == sizeof(pollfd), "GLib polls with poll()'s own structure");

constexpr long kNanosecondsPerMillisecond = 1000000;
constexpr long kNanosecondsPerMicrosecond = 1000;
constexpr int kMillisecondsPerSecond = 1000;

/// The three sets with which Ecore asks; in practice, its epoll descriptor for reading.
struct EcoreSets {
  int count;
  fd_set *reading;
  fd_set *writing;
  fd_set *failing;

  void appendTo(std::vector<pollfd> &entries) const {
    for (int descriptor = 0; descriptor < count; ++descriptor) {
      const int events = (FD_ISSET(descriptor, reading) ? POLLIN : 0)
                         | (FD_ISSET(descriptor, writing) ? POLLOUT : 0)
                         | (FD_ISSET(descriptor, failing) ? POLLPRI : 0);
      if (events != 0) {
        entries.push_back({descriptor, static_cast<short>(events), 0});
      }
    }
  }

  /// @return How many of the entries are ready; the sets then hold those.
  int fillFrom(const pollfd *first, const pollfd *last) const {
    FD_ZERO(reading);
    FD_ZERO(writing);
    FD_ZERO(failing);
    int ready = 0;
    for (const pollfd *entry = first; entry != last; ++entry) {
      const int events = entry->revents;
      const bool isReadable = (events & (POLLIN | POLLHUP | POLLERR)) != 0;
      if (isReadable && (entry->events & POLLIN) != 0) {
        FD_SET(entry->fd, reading);
      }
      if ((events & (POLLOUT | POLLERR)) != 0 && (entry->events & POLLOUT) != 0) {
        FD_SET(entry->fd, writing);
      }
      if ((events & POLLPRI) != 0) {
        FD_SET(entry->fd, failing);
      }
      ready += events != 0 ? 1 : 0;
    }
    return ready;
  }
};

/// The default context, owned by this thread while the object lives.
class OwnedContext {
public:
  explicit OwnedContext(const GLib &glib)
      : _glib(glib), _context(glib.contextDefault()),
        _isOwned(glib.contextAcquire(_context) != FALSE) {}
  ~OwnedContext() {
    if (_isOwned) {
      _glib.contextRelease(_context);
    }
  }
  OwnedContext(const OwnedContext &) = delete;
  OwnedContext &operator=(const OwnedContext &) = delete;

  /// Not when another thread runs the context.
  bool isOwned() const { return _isOwned; }

  /// Puts what GLib waits for into `entries`. @return How long to wait at most, or -1.
  int prepare(std::vector<pollfd> &entries) {
    (void)_glib.contextPrepare(_context, &_priority);
    int milliseconds = -1;
    entries.resize(entries.capacity());
    int count = query(entries, milliseconds);
    while (static_cast<std::size_t>(count) > entries.size()) {
      entries.resize(static_cast<std::size_t>(count));
      count = query(entries, milliseconds);
    }
    entries.resize(static_cast<std::size_t>(count));
    return milliseconds;
  }

  bool check(std::vector<pollfd> &entries, std::size_t count) {
    return _glib.contextCheck(_context, _priority, toGLib(entries), static_cast<int>(count))
           != FALSE;
  }
  void dispatch() { _glib.contextDispatch(_context); }

private:
  static GPollFD *toGLib(std::vector<pollfd> &entries) {
    return reinterpret_cast<GPollFD *>(entries.data());
  }
  int query(std::vector<pollfd> &entries, int &milliseconds) {
    return _glib.contextQuery(_context, _priority, &milliseconds, toGLib(entries),
                              static_cast<int>(entries.size()));
  }

  const GLib &_glib;
  GMainContext *_context;
  bool _isOwned;
  int _priority = 0;
};

timespec shorterOf(const timeval *ecore, int milliseconds) {
  timespec wait = {milliseconds / kMillisecondsPerSecond,
                   milliseconds % kMillisecondsPerSecond * kNanosecondsPerMillisecond};
  if (ecore == nullptr) {
    return wait;
  }
  const timespec other = {ecore->tv_sec, ecore->tv_usec * kNanosecondsPerMicrosecond};
  const bool isOtherShorter =
      milliseconds < 0
      || std::pair(other.tv_sec, other.tv_nsec) < std::pair(wait.tv_sec, wait.tv_nsec);
  return isOtherShorter ? other : wait;
}

int wait(std::vector<pollfd> &entries, const timeval *ecore, int milliseconds) {
  if (ecore == nullptr && milliseconds < 0) {
    return ppoll(entries.data(), entries.size(), nullptr, nullptr);
  }
  const timespec limit = shorterOf(ecore, milliseconds);
  return ppoll(entries.data(), entries.size(), &limit, nullptr);
}

/// Used again by the next wait; an Ecore loop inside a GLib callback finds it taken, and has its
/// own.
std::vector<pollfd> &spareEntries() {
  static auto *const entries = new std::vector<pollfd>;
  return *entries;
}

/**
 * What Ecore waits through. Noexcept, because an exception that has passed through GLib's frames
 * leaves the context locked and its sources marked as running.
 */
int waitForBoth(int count, fd_set *reading, fd_set *writing, fd_set *failing,
                timeval *timeout) noexcept {
  const GLib &glib = *loaded();
  OwnedContext context(glib);
  if (!context.isOwned()) {
    return select(count, reading, writing, failing, timeout);
  }
  std::vector<pollfd> entries = std::exchange(spareEntries(), {});
  const EcoreSets sets{count, reading, writing, failing};

  polledByEcore(glib) = true;
  const int milliseconds = context.prepare(entries);
  const std::size_t glibCount = entries.size();
  sets.appendTo(entries);
  int result = wait(entries, timeout, milliseconds);
  const int error = errno;
  if (result >= 0) {
    result = sets.fillFrom(entries.data() + glibCount, entries.data() + entries.size());
  }
  const bool isReady = context.check(entries, glibCount);
  polledByEcore(glib) = false;
  spareEntries().swap(entries);

  // Last: a callback may run either loop, and quit this one.
  if (isReady) {
    context.dispatch();
  }
  errno = error;
  return result;
}

} // namespace

void startEcorePolling() {
  if (findLoaded() != nullptr && ecore_main_loop_select_func_get() == &select) {
    ecore_main_loop_select_func_set(&waitForBoth);
  }
}

void stopEcorePolling() {
  if (ecore_main_loop_select_func_get() == &waitForBoth) {
    ecore_main_loop_select_func_set(&select);
  }
}

} // namespace platform::glib
