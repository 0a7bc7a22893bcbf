// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_LOOP_JOB_H
#define PLATFORM_RPC_PORT_LOOP_JOB_H

#include "common/LinkedList.h"

namespace platform::rpc_port {

/**
 * @brief Something to do in a later turn of the loop, once however often it is planned until then.
 * @details Not an Ecore_Job: when a C++ exception passes through one of those, Ecore runs no other
 *          for the rest of the process. File descriptor handlers stand it, and these jobs are run
 *          by one.
 */
class Job : public Linked<Job> {
public:
  /// What is called. It may destroy the job from inside the call.
  using Function = void (*)(void *data);

  Job(Function function, void *data) : _function(function), _data(data) {}
  ~Job() { cancel(); }
  Job(const Job &) = delete;
  Job &operator=(const Job &) = delete;

  void plan();
  void cancel();

private:
  friend class JobQueue;

  Function _function;
  void *_data;
  bool _isPlanned = false;
};

} // namespace platform::rpc_port

#endif
