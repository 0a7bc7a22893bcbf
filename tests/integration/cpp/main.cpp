// SPDX-License-Identifier: Apache-2.0
//
// An application with norix.hpp, for tests: each of its actions answers in another way. It says
// "ready" on its standard output, and ends when its standard input does.
#include <Ecore.h>
#include <norix/json.hpp>

#include <atomic>
#include <cstdio>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

/// Asked by the leak checker, where there is one: EFL loses sight of some of its classes.
extern "C" __attribute__((visibility("default"))) const char *__lsan_default_suppressions() {
  return "leak:efl_class_new\n";
}

namespace {

class Application {
public:
  void run() {
    start();
    ecore_main_fd_handler_add(STDIN_FILENO, ECORE_FD_READ, onInput, nullptr, nullptr, nullptr);
    std::puts("ready");
    std::fflush(stdout);
    ecore_main_loop_begin();
    end();
  }

  void registerAll(norix::Assistant &assistant) {
    assistant.answerIfForgotten("Something went wrong");
    assistant.onState(
        [this] {
          return nlohmann::json{{"answered", _answered.load()}};
        },
        norix::State("How many were answered").example(R"({"answered":1})"));
    assistant.onAction("echo", [](norix::Request request) { request.answer(request.params()); });
    assistant.onAction(norix::Action("volume")
                           .title("Volume")
                           .description("Sets the volume")
                           .example(R"({"volume":40})")
                           .utterance("volume {volume}"),
                       norix::param<int>("volume").range(0, 100).description("In percent"),
                       [](int volume) { return "The volume is " + std::to_string(volume); });
    assistant.onAction("throw", []() -> std::string { throw std::runtime_error("no"); });
    assistant.onAction("forget", [](norix::Request /*request*/) {});
    assistant.onAction("thread", [this](norix::Request request) { answerOnThread(request); });
    assistant.onAction("keep",
                       [this](norix::Request request) { _kept.emplace(std::move(request)); });
    assistant.onAction("release", [this] { return release(); });
    assistant.onAction("restart", [this] {
      _assistant.reset();
      start();
      std::puts("ready");
      std::fflush(stdout);
      return "too late";
    });
  }

private:
  static Eina_Bool onInput(void * /*data*/, Ecore_Fd_Handler * /*handler*/) {
    ecore_main_loop_quit();
    return ECORE_CALLBACK_CANCEL;
  }

  void start() {
    _assistant.emplace();
    registerAll(*_assistant);
  }

  void end() {
    for (std::thread &thread : _threads) {
      thread.join();
    }
    _assistant.reset();
  }

  void answerOnThread(norix::Request &request) {
    _threads.emplace_back([this, moved = std::move(request)]() mutable {
      ++_answered;
      moved.answer("From a thread");
    });
  }

  // What became of the answer to the request that was kept.
  std::string release() {
    if (!_kept.has_value()) {
      return "none";
    }
    const bool isCurrent = _kept->isCurrent();
    const norix::Outcome outcome = _kept->answer("released");
    _kept.reset();
    return isCurrent || outcome != norix::Outcome::NobodyWaits ? "taken" : "dropped";
  }

  std::atomic<int> _answered{0};
  std::vector<std::thread> _threads;
  std::optional<norix::Request> _kept;
  std::optional<norix::Assistant> _assistant;
};

} // namespace

int main(int argc, char **argv) {
  Application application;
  if (norix::printsDeclarations(argc, argv, [&application](norix::Assistant &assistant) {
        application.registerAll(assistant);
      })) {
    return 0;
  }
  ecore_app_no_system_modules();
  if (ecore_init() == 0) {
    return 1;
  }
  try {
    application.run();
  } catch (const norix::Error &error) {
    std::puts(error.what());
    std::fflush(stdout);
  }
  ecore_shutdown();
  return 0;
}
