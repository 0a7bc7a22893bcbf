// SPDX-License-Identifier: Apache-2.0
#include "MainLoop.h"

#include <Ecore.h>

#include <condition_variable>
#include <mutex>
#include <utility>
#include <vector>

namespace fake {

namespace {

struct CallOfAThread {
  Ecore_Cb function;
  void *data;
};

std::mutex mutex;
std::condition_variable added;
std::vector<CallOfAThread> waiting;

std::vector<CallOfAThread> takeCalls() {
  const std::lock_guard<std::mutex> lock(mutex);
  return std::exchange(waiting, {});
}

} // namespace

void waitForCallOfThreads() {
  std::unique_lock<std::mutex> lock(mutex);
  added.wait(lock, [] { return !waiting.empty(); });
}

std::size_t runCallsOfThreads() {
  const std::vector<CallOfAThread> calls = takeCalls();
  for (const CallOfAThread &call : calls) {
    call.function(call.data);
  }
  return calls.size();
}

void dropCallsOfThreads() {
  takeCalls();
}

} // namespace fake

extern "C" void ecore_main_loop_thread_safe_call_async(Ecore_Cb callback, void *data) {
  const std::lock_guard<std::mutex> lock(fake::mutex);
  fake::waiting.push_back({callback, data});
  fake::added.notify_one();
}
