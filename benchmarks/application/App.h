// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_BENCHMARKS_APPLICATION_APP_H
#define NORIX_BENCHMARKS_APPLICATION_APP_H

#include "application/actions.h"
#include "assistant/client/Client.h"
#include "assistant/client/MainLoop.h"
#include "harness/Samples.h"
#include "support/Process.h"

#include <string>
#include <sys/types.h>
#include <vector>

namespace benchmarks {

/** @brief The measured application (main.cpp) in a process of its own. Needs a TemporaryRuntime. */
class App {
public:
  struct Options {
    /** How many actions it registers besides those that it answers. */
    int furtherActions = 0;
    support::Process::Environment environment;
    /** What runs the program: empty, or valgrind with its options. */
    std::vector<std::string> runner;
  };

  /** @brief Starts it, and returns when it can be asked. */
  App(const std::string &appId, const Options &options);

  pid_t pid() const { return _pid; }

private:
  support::Process _process;
  pid_t _pid;
};

/** @brief The assistant's side in this process: one connection to an application. */
class Assistant {
public:
  explicit Assistant(const std::string &appId);

  /** @brief Asks so many times, each time when the answer has come, which must have that size. */
  void exchange(const std::string &actionId, std::size_t answerSize, int count, Samples &samples);
  /** @brief The parameters that go along with every request; by default they make it 200 bytes. */
  void setParameters(std::string text) { _request.actionParams = std::move(text); }

private:
  norix::assistant::Client::Handlers handlers();
  void ask();
  void answered(const norix::assistant::Response &response);
  void fail(const std::string &why);

  norix::assistant::MainLoop _loop;
  norix::assistant::Client _client;
  norix::assistant::Request _request;
  std::size_t _answerSize = 0;
  int _left = 0;
  Samples *_samples = nullptr;
  Samples::Clock::time_point _start;
  std::string _failure;
};

} // namespace benchmarks

#endif
