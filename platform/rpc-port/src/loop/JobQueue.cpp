// SPDX-License-Identifier: Apache-2.0
#include "loop/JobQueue.h"

#include <cstddef>
#include <cstdint>
#include <sys/eventfd.h>
#include <unistd.h>

namespace platform::rpc_port {

void Job::plan() {
  if (!_isPlanned) {
    JobQueue::get().add(*this);
  }
}

void Job::cancel() {
  if (_isPlanned) {
    JobQueue::get().remove(*this);
  }
}

JobQueue &JobQueue::get() {
  // Never destroyed: an application may exit with stubs and proxies alive.
  static auto *const queue = new JobQueue;
  return *queue;
}

bool JobQueue::open() {
  _event = Descriptor(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC));
  return _event && _watch.start(_event.get(), true, false);
}

void JobQueue::close() {
  _watch.stop();
  _event.close();
  _isSignalled = false;
}

bool JobQueue::reopen() {
  close();
  while (_jobs.first() != nullptr) {
    remove(*_jobs.first());
  }
  return open();
}

void JobQueue::add(Job &job) {
  _jobs.add(job);
  ++_count;
  job._isPlanned = true;
  signal();
}

void JobQueue::remove(Job &job) {
  _jobs.remove(job);
  --_count;
  job._isPlanned = false;
}

/// Runs what was planned up to now; what the jobs plan runs in another turn.
void JobQueue::runPlanned(FdWatch::Events /*events*/) {
  std::uint64_t count = 0;
  (void)!read(_event.get(), &count, sizeof count);
  _isSignalled = false;
  for (std::size_t left = _count; left > 0 && _count > 0; --left) {
    Job &job = *_jobs.first();
    remove(job);
    if (_count > 0) {
      signal(); // Before the call: the job may throw, or run a loop of its own.
    }
    job._call();
  }
}

void JobQueue::signal() {
  if (!_isSignalled) {
    const std::uint64_t one = 1;
    _isSignalled = write(_event.get(), &one, sizeof one) == sizeof one;
  }
}

} // namespace platform::rpc_port
