// SPDX-License-Identifier: Apache-2.0
//
// The bare sockets once more, with Ecore's loop in the process that answers, or in both: what the
// library cannot be quicker than, as long as applications have that loop.
#include "assistant/client/MainLoop.h"
#include "peers/BlockingAsker.h"
#include "support/sockets.h"

#include <Ecore.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <utility>

namespace benchmarks {

namespace {

constexpr const char *kName = "Ecore and two sockets";
constexpr const char *kWithDutiesName = "Ecore and the duties"; // LEAST in report/figures.py
constexpr const char *kBothSidesName = "Ecore on both sides";

/** Watches a socket as long as it lives. */
class Reader {
public:
  Reader(int socket, std::function<void()> readable)
      : _readable(std::move(readable)),
        _handler(
            ecore_main_fd_handler_add(socket, ECORE_FD_READ, onReadable, this, nullptr, nullptr)) {}
  Reader(const Reader &) = delete;
  Reader &operator=(const Reader &) = delete;
  ~Reader() { ecore_main_fd_handler_del(_handler); }

private:
  static Eina_Bool onReadable(void *data, Ecore_Fd_Handler * /*handler*/) {
    static_cast<Reader *>(data)->_readable();
    return ECORE_CALLBACK_RENEW;
  }

  std::function<void()> _readable;
  Ecore_Fd_Handler *_handler;
};

class EcoreAsker final : public Peer {
public:
  EcoreAsker()
      : _process(serveCommand(kName, {_requests.others(), _answers.others()})),
        _reader(_answers.own(), [this] { receive(); }) {
    _requests.handOver();
    _answers.handOver();
  }

  void exchange(std::size_t answerSize, int count, Samples &samples) override {
    _request = requestFor(answerSize);
    _answer.resize(answerSize);
    _answerSize = answerSize;
    _left = count;
    _samples = &samples;
    _start = Samples::Clock::now();
    ask();
    ecore_main_loop_begin();
  }

private:
  void ask() {
    _received = 0;
    support::sendAll(_requests.own(), _request.data(), _request.size());
  }

  void receive() {
    const ssize_t size =
        recv(_answers.own(), _answer.data() + _received, _answerSize - _received, MSG_DONTWAIT);
    _received += static_cast<std::size_t>(std::max<ssize_t>(size, 0));
    if (_received < _answerSize) {
      return;
    }
    _start = _samples->addSince(_start);
    if (--_left > 0) {
      ask();
    } else {
      ecore_main_loop_quit();
    }
  }

  SocketPair _requests;
  SocketPair _answers;
  support::Process _process;
  norix::assistant::MainLoop _loop;
  Reader _reader;
  RequestBytes _request{};
  std::vector<char> _answer;
  std::size_t _answerSize = 0;
  std::size_t _received = 0;
  int _left = 0;
  Samples *_samples = nullptr;
  Samples::Clock::time_point _start;
};

/** Kept from one answer to the next, so that its memory is warm. */
std::string bundleValue;

/**
 * What every request needs in any library: a timeout, a look for the allow list, a copy of the
 * answer as a text, and one in a bundle. Both copies are made from a C text, whose length has to be
 * found.
 */
const std::string &doDuties(const std::string &answer) {
  constexpr double kTimeout = 30.0;
  const auto cancel = [](void * /*data*/) { return Eina_Bool{ECORE_CALLBACK_CANCEL}; };
  Ecore_Timer *const timer = ecore_timer_add(kTimeout, cancel, nullptr);
  const int list = open("/usr/share/norix/allow_list.dat", O_RDONLY | O_CLOEXEC);
  if (list >= 0) {
    close(list);
  }
  ecore_timer_del(timer);
  const char *const given = answer.c_str();
  const std::string text(given);
  const char *const taken = text.c_str();
  bundleValue.assign(taken);
  return bundleValue;
}

using Duties = std::function<const std::string &(const std::string &)>;

int serveWith(const std::vector<std::string> &arguments, const Duties &duties) {
  const int requests = std::stoi(arguments.at(0));
  const int answers = std::stoi(arguments.at(1));
  const norix::assistant::MainLoop loop;
  std::string answer;
  const Reader reader(requests, [&] {
    RequestBytes request{};
    if (!support::receiveAll(requests, request.data(), request.size())) {
      ecore_main_loop_quit();
      return;
    }
    answer.resize(answerSizeOf(request), 'a');
    const std::string &sent = duties(answer);
    support::sendAll(answers, sent.data(), sent.size());
  });
  ecore_main_loop_begin();
  return 0;
}

int serve(const std::vector<std::string> &arguments) {
  return serveWith(arguments,
                   [](const std::string &answer) -> const std::string & { return answer; });
}

int serveWithDuties(const std::vector<std::string> &arguments) {
  return serveWith(arguments, doDuties);
}

} // namespace

PeerKind ecoreSockets() {
  return {kName, [](const auto & /*folder*/) { return std::make_unique<BlockingAsker>(kName); },
          serve, ""};
}

PeerKind ecoreSocketsWithDuties() {
  return {kWithDutiesName,
          [](const auto & /*folder*/) { return std::make_unique<BlockingAsker>(kWithDutiesName); },
          serveWithDuties, ""};
}

PeerKind ecoreSocketsBothSides() {
  return {kBothSidesName, [](const auto & /*folder*/) { return std::make_unique<EcoreAsker>(); },
          serve, ""};
}

} // namespace benchmarks
