// SPDX-License-Identifier: Apache-2.0
//
// Answers from threads, while requests are replaced and the norix::Assistant is destroyed and made
// again: norix_cpp_threads [answers]. The library runs on a platform that does nothing, so that
// each exchange takes next to no time; ThreadSanitizer sees all of it. The main loop is this
// program's.
//
// What has to hold: a request that nothing replaced is answered exactly once; a replaced one at
// most once, and only while it was the current one; the answers of all threads are accounted for.
#include "Answerers.h"
#include "nullplatform/NullPlatform.h"
#include "unit/cpp/MainLoop.h"

#include <norix.hpp>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

namespace {

namespace platform = benchmarks::null_platform;

constexpr unsigned long kAnswers = 100000;
constexpr unsigned kThreads = 8;

class Stress {
public:
  explicit Stress(unsigned long answers) : _answers(answers) {}

  bool run() {
    start();
    while (_requests < _answers) {
      request();
      const unsigned long turn = _random.next();
      if (turn % 64 == 0) {
        restart();
      } else if (turn % 4 != 0) {
        awaitAnswer();
      } // Otherwise the next request replaces this one.
    }
    awaitAnswer();
    _assistant.reset();
    _answerers.finish();
    return report();
  }

private:
  // The same numbers every time; how the threads run is chance enough.
  class Random {
  public:
    unsigned long next() {
      _state = _state * 6364136223846793005ULL + 1442695040888963407ULL;
      return _state >> 33;
    }

  private:
    unsigned long _state = 1;
  };

  void start() {
    _assistant.emplace();
    _assistant->onAction("play",
                         [this](norix::Request request) { _answerers.give(std::move(request)); });
    _assistant->onState([this](norix::Request request) { _answerers.give(std::move(request)); });
    platform::connect();
  }

  // An answer that is on its way is sent before the end, one that comes later is nobody's.
  void restart() {
    const unsigned long before = platform::sentParcels();
    _assistant.reset();
    count(before);
    start();
    ++_restarts;
  }

  void request() {
    const unsigned long before = platform::sentParcels();
    _isAnswered = false;
    ++_requests;
    platform::request(_random.next() % 2 == 0 ? "play" : "getAppContext");
    count(before);
  }

  void awaitAnswer() {
    while (!_isAnswered) {
      const unsigned long before = platform::sentParcels();
      fake::waitForCallOfThreads();
      fake::runCallsOfThreads();
      count(before);
    }
    ++_awaited;
  }

  // What was sent since then answers the current request, for the library knows no other.
  void count(unsigned long before) {
    const unsigned long sent = platform::sentParcels() - before;
    if (sent > 1 || (sent == 1 && _isAnswered)) {
      ++_answeredTwice;
    }
    _isAnswered = _isAnswered || sent != 0;
    _sent += sent;
  }

  bool report() const {
    const Answerers::Tally &tally = _answerers.tally();
    std::printf(
        "%lu requests, %lu answered, %lu awaited, %lu restarts; of the threads' answers %lu "
        "on their way, %lu nobody's, %lu otherwise; answered twice: %lu\n",
        _requests, _sent, _awaited, _restarts, tally.onTheirWay.load(), tally.nobodys.load(),
        tally.otherwise.load(), _answeredTwice);
    return _answeredTwice == 0 && tally.otherwise == 0
           && tally.onTheirWay + tally.nobodys == _requests && _sent >= _awaited
           && _sent <= tally.onTheirWay && _restarts > 0 && _awaited > 0;
  }

  unsigned long _answers;
  Random _random;
  Answerers _answerers{kThreads};
  std::optional<norix::Assistant> _assistant;
  bool _isAnswered = false;
  unsigned long _requests = 0;
  unsigned long _sent = 0;
  unsigned long _awaited = 0;
  unsigned long _restarts = 0;
  unsigned long _answeredTwice = 0;
};

} // namespace

int main(int argc, char **argv) {
  Stress stress(argc > 1 ? std::stoul(argv[1]) : kAnswers);
  return stress.run() ? EXIT_SUCCESS : EXIT_FAILURE;
}
