// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_LOOP_JOB_H
#define PLATFORM_RPC_PORT_LOOP_JOB_H

#include "common/Callback.h"
#include "common/LinkedList.h"

namespace platform::rpc_port {

/// A deferred call: planned, it is made in a later turn of the loop, once however often it is
/// planned until then. Not an Ecore_Job: when a C++ exception passes through one of those, Ecore
/// runs no other for the rest of the process. A descriptor handler, which makes these calls,
/// survives it.
class Job : public Linked<Job> {
public:
  /// @param call May destroy the job.
  explicit Job(Callback<void()> call) : _call(call) {}
  ~Job() { cancel(); }
  Job(const Job &) = delete;
  Job &operator=(const Job &) = delete;

  void plan();
  void cancel();

private:
  friend class JobQueue;

  Callback<void()> _call;
  bool _isPlanned = false;
};

} // namespace platform::rpc_port

#endif
