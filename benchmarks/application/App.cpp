// SPDX-License-Identifier: Apache-2.0
#include "application/App.h"

#include <Ecore.h>

#include <stdexcept>

namespace benchmarks {

namespace {

// With the rest of the request, 200 bytes on the wire.
constexpr std::size_t kUsualParameters = 44;
// Under callgrind an application takes its time to start.
constexpr double kPatience = 120.0;

std::vector<std::string> commandOf(const App::Options &options) {
  std::vector<std::string> command = options.runner;
  command.emplace_back(BENCHMARK_APPLICATION);
  command.push_back(std::to_string(options.furtherActions));
  return command;
}

support::Process::Environment environmentOf(const std::string &appId, const App::Options &options) {
  support::Process::Environment environment = options.environment;
  environment.emplace("AUL_APPID", appId);
  environment.emplace("DLOG_FILTER", "*:S");
  return environment;
}

} // namespace

App::App(const std::string &appId, const Options &options)
    : _process(commandOf(options), environmentOf(appId, options)),
      _pid(std::stoi(_process.readLine(kPatience))) {}

Assistant::Assistant(const std::string &appId) : _client(handlers()) {
  _request.actionParams = std::string(kUsualParameters, 'p');
  _client.connect(appId);
  ecore_main_loop_begin();
  if (!_failure.empty()) {
    throw std::runtime_error(_failure);
  }
  _client.setCallback({});
}

norix::assistant::Client::Handlers Assistant::handlers() {
  norix::assistant::Client::Handlers made;
  made.connected = [] { ecore_main_loop_quit(); };
  made.ended =
      made.malformed = [this](const norix::assistant::Error &error) { fail(error.what()); };
  made.answered = [this](const norix::assistant::Answer &answer) { answered(answer.response); };
  return made;
}

void Assistant::exchange(const std::string &actionId, std::size_t answerSize, int count,
                         Samples &samples) {
  _request.actionId = actionId;
  _answerSize = answerSize;
  _left = count;
  _samples = &samples;
  _start = Samples::Clock::now();
  ask();
  ecore_main_loop_begin();
  if (!_failure.empty()) {
    throw std::runtime_error(_failure);
  }
}

void Assistant::ask() {
  _request.requestId = norix::assistant::nextRequestId();
  _client.send(_request);
}

void Assistant::answered(const norix::assistant::Response &response) {
  if (response.requestId() != _request.requestId || response.text().size() != _answerSize) {
    fail("not the answer that was asked for: " + response.statusMessage());
    return;
  }
  _start = _samples->addSince(_start);
  if (--_left > 0) {
    ask();
  } else {
    ecore_main_loop_quit();
  }
}

void Assistant::fail(const std::string &why) {
  _failure = why;
  ecore_main_loop_quit();
}

} // namespace benchmarks
