// SPDX-License-Identifier: Apache-2.0
#include "Answerers.h"

#include <utility>

Answerers::Answerers(unsigned threads) {
  for (unsigned i = 0; i < threads; ++i) {
    _threads.emplace_back([this] { work(); });
  }
}

void Answerers::give(norix::Request request) {
  const std::lock_guard<std::mutex> lock(_mutex);
  _requests.push_back(std::move(request));
  _changed.notify_one();
}

void Answerers::finish() {
  {
    const std::lock_guard<std::mutex> lock(_mutex);
    _isFinished = true;
    _changed.notify_all();
  }
  for (std::thread &thread : _threads) {
    thread.join();
  }
}

void Answerers::work() {
  std::unique_lock<std::mutex> lock(_mutex);
  while (true) {
    _changed.wait(lock, [this] { return _isFinished || !_requests.empty(); });
    if (_requests.empty()) {
      return;
    }
    norix::Request request = std::move(_requests.front());
    _requests.pop_front();
    lock.unlock();
    answer(std::move(request));
    lock.lock();
  }
}

void Answerers::answer(norix::Request request) {
  // A question beforehand, as applications ask it; the answer may be another one by now.
  static_cast<void>(request.isCurrent());
  switch (request.answer("Playing " + request.actionId())) {
  case norix::Outcome::OnItsWay:
    ++_tally.onTheirWay;
    break;
  case norix::Outcome::NobodyWaits:
    ++_tally.nobodys;
    break;
  default:
    ++_tally.otherwise;
  }
}
