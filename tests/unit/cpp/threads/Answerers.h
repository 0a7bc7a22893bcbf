// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_UNIT_CPP_THREADS_ANSWERERS_H
#define NORIX_TESTS_UNIT_CPP_THREADS_ANSWERERS_H

#include <norix.hpp>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

// Threads that answer the requests that they are given.
class Answerers {
public:
  // What became of the answers.
  struct Tally {
    std::atomic<unsigned long> onTheirWay{0};
    std::atomic<unsigned long> nobodys{0};
    std::atomic<unsigned long> otherwise{0};
  };

  explicit Answerers(unsigned threads);

  void give(norix::Request request);
  // Answers what is left, and ends the threads.
  void finish();

  const Tally &tally() const { return _tally; }

private:
  void work();
  void answer(norix::Request request);

  Tally _tally;
  std::mutex _mutex;
  std::condition_variable _changed;
  std::deque<norix::Request> _requests;
  bool _isFinished = false;
  std::vector<std::thread> _threads;
};

#endif
