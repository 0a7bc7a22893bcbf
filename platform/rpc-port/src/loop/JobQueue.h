// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_LOOP_JOB_QUEUE_H
#define PLATFORM_RPC_PORT_LOOP_JOB_QUEUE_H

#include "common/Descriptor.h"
#include "loop/FdWatch.h"
#include "loop/Job.h"

#include <cstddef>

namespace platform::rpc_port {

/// The planned jobs of the process, and the event descriptor that wakes the loop for them.
class JobQueue final {
public:
  static JobQueue &get();

  /// Joins the loop; Ecore is initialised. @return Success.
  bool open();
  void close();
  /// Joins the loop of a forked child, and drops what its parent has planned.
  bool reopen();

  void add(Job &job);
  void remove(Job &job);

private:
  JobQueue() : _watch(FdWatch::Ready::to<&JobQueue::runPlanned>(*this)) {}
  void runPlanned(FdWatch::Events events);
  void signal();

  Descriptor _event;
  FdWatch _watch;
  LinkedList<Job> _jobs; // Planning a job allocates nothing: connections end also without memory.
  std::size_t _count = 0;
  bool _isSignalled = false;
};

} // namespace platform::rpc_port

#endif
