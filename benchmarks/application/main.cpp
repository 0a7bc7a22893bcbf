// SPDX-License-Identifier: Apache-2.0
//
// The application under measurement: benchmark_application [number of further actions]
// Prints its process id when it can be asked, and runs until it is killed.
#include "application/actions.h"

#include <Ecore.h>
#include <norix.h>

#include <cstdio>
#include <cstdlib>
#include <deque>
#include <string>
#include <unistd.h>
#include <valgrind/callgrind.h>

namespace {

using benchmarks::answerAction;
using benchmarks::Answering;

struct Answer {
  std::string text;
  void *request = nullptr;
};

const char *textOf(void *answer) {
  return static_cast<Answer *>(answer)->text.c_str();
}

void answerNow(void *request, bundle * /*parameters*/, void *answer) {
  norix_complete_action_execution(request, textOf(answer));
}

void answerInJob(void *answer) {
  norix_complete_action_execution(static_cast<Answer *>(answer)->request, textOf(answer));
}

void answerLater(void *request, bundle * /*parameters*/, void *answer) {
  static_cast<Answer *>(answer)->request = request;
  ecore_job_add(answerInJob, answer);
}

void answerState(void *request, void *answer) {
  norix_complete_app_state_request(request, textOf(answer));
}

void beginCounting(void *request, bundle * /*parameters*/, void * /*userData*/) {
  CALLGRIND_START_INSTRUMENTATION;
  norix_complete_action_execution(request, "counting");
}

void endCounting(void *request, bundle * /*parameters*/, void * /*userData*/) {
  CALLGRIND_STOP_INSTRUMENTATION;
  CALLGRIND_DUMP_STATS;
  norix_complete_action_execution(request, "counted");
}

void registerAnswers(std::deque<Answer> &answers) {
  for (const std::size_t size : benchmarks::kAnswerSizes) {
    answers.push_back({std::string(size, 'a')});
    norix_set_action_execution_cb(answerAction(size).c_str(), answerNow, &answers.back());
    norix_set_action_execution_cb(answerAction(size, Answering::InLaterTurn).c_str(), answerLater,
                                  &answers.back());
  }
  norix_set_app_state_request_cb(answerState, &answers.front());
  norix_set_action_execution_cb(benchmarks::kBeginCounting, beginCounting, nullptr);
  norix_set_action_execution_cb(benchmarks::kEndCounting, endCounting, nullptr);
}

} // namespace

int main(int argc, char **argv) {
  ecore_app_no_system_modules();
  if (ecore_init() == 0 || norix_initialize() != NORIX_ERROR_NONE) {
    return EXIT_FAILURE;
  }
  std::deque<Answer> answers;
  registerAnswers(answers);
  const int further = argc > 1 ? std::atoi(argv[1]) : 0;
  for (int i = 0; i < further; ++i) {
    norix_set_action_execution_cb(("further-" + std::to_string(i)).c_str(), answerNow,
                                  &answers.front());
  }
  std::printf("%d\n", static_cast<int>(getpid()));
  std::fflush(stdout);
  ecore_main_loop_begin();
}
