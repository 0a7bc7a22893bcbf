// SPDX-License-Identifier: Apache-2.0
#include "application/Crowd.h"

#include "application/actions.h"
#include "assistant/client/Client.h"
#include "assistant/client/MainLoop.h"

#include <Ecore.h>

#include <cstdlib>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <vector>

namespace benchmarks {

namespace {

constexpr double kPatience = 600.0;

using norix::assistant::Client;
using norix::assistant::Error;

class Crowd {
public:
  Crowd(const std::string &appId, int connections) {
    for (int i = 0; i < connections; ++i) {
      const std::string sender = "com.example.assistant" + std::to_string(i);
      setenv("AUL_APPID", sender.c_str(), 1);
      _clients.push_back(std::make_unique<Client>(handlers(_clients.size())));
      _clients.back()->connect(appId);
      run();
      _clients.back()->setCallback({});
    }
  }

  /** All ask, and each again when it has its answer. */
  double exchange(int count) {
    Samples samples;
    _toSend = _toCome = count;
    const auto start = Samples::Clock::now();
    for (std::size_t i = 0; i < _clients.size(); ++i) {
      ask(i);
    }
    run();
    samples.addSince(start);
    return samples.mean() / count;
  }

private:
  Client::Handlers handlers(std::size_t whose) {
    Client::Handlers made;
    made.connected = [] { ecore_main_loop_quit(); };
    made.ended = made.malformed = [this](const Error &error) {
      _failure = error.what();
      ecore_main_loop_quit();
    };
    made.answered = [this, whose](const norix::assistant::Answer & /*answer*/) {
      ask(whose);
      if (--_toCome == 0) {
        ecore_main_loop_quit();
      }
    };
    return made;
  }

  void ask(std::size_t whose) {
    if (_toSend > 0) {
      --_toSend;
      _clients[whose]->send(
          norix::assistant::actionRequest(answerAction(kAnswerSizes.front()), "{}"));
    }
  }

  void run() {
    ecore_main_loop_begin();
    if (!_failure.empty()) {
      throw std::runtime_error(_failure);
    }
  }

  norix::assistant::MainLoop _loop;
  std::vector<std::unique_ptr<Client>> _clients;
  int _toSend = 0;
  int _toCome = 0;
  std::string _failure;
};

} // namespace

CrowdProcess::CrowdProcess(const std::string &appId, int connections)
    : _process({"/proc/self/exe", "--crowd", appId, std::to_string(connections)}) {
  _process.readLine(kPatience);
}

void CrowdProcess::exchange(int count, Samples &samples) {
  _process.writeLine(std::to_string(count));
  samples.addNanoseconds(std::stod(_process.readLine(kPatience)));
}

int runCrowd(const std::string &appId, int connections) {
  Crowd crowd(appId, connections);
  std::cout << "ready" << std::endl;
  for (int count = 0; std::cin >> count;) {
    std::cout << crowd.exchange(count) << std::endl;
  }
  return EXIT_SUCCESS;
}

} // namespace benchmarks
