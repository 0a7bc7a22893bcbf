// SPDX-License-Identifier: Apache-2.0
#include "assistant/certify/Load.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>

namespace norix::assistant::certify {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr Clock::duration kToLoadAnAction = std::chrono::milliseconds(500);

fs::path processFolder(pid_t process) {
  return fs::path("/proc") / std::to_string(process);
}

long memoryOf(pid_t process) {
  std::ifstream status(processFolder(process) / "status");
  const std::string key = "RssAnon:";
  for (std::string word; status >> word;) {
    if (word == key) {
      long kibibytes = 0;
      status >> kibibytes;
      return kibibytes;
    }
  }
  return 0;
}

long descriptorsOf(pid_t process) {
  std::error_code ignored;
  const fs::directory_iterator all(processFolder(process) / "fd", ignored);
  return std::distance(begin(all), end(all));
}

bool hasAddressSanitizer(pid_t process) {
  std::ifstream maps(processFolder(process) / "maps");
  for (std::string line; std::getline(maps, line);) {
    if (line.find("libasan") != std::string::npos
        || line.find("libclang_rt.asan") != std::string::npos) {
      return true;
    }
  }
  return false;
}

/// What is asked next.
class Mixture {
public:
  explicit Mixture(const std::vector<const ActionUse *> &actions) {
    for (const ActionUse *const use : actions) {
      _parts.push_back({use, kToLoadAnAction});
    }
  }

  Request next() {
    _begin = Clock::now();
    _current = _turn++ % (_parts.size() + 1);
    return isAction() && part().left > Clock::duration::zero()
               ? actionRequest(part().use->action.id, part().use->params.front())
               : stateRequest();
  }
  void answered() {
    if (isAction()) {
      part().left -= Clock::now() - _begin;
    }
  }

private:
  struct Part {
    const ActionUse *use;
    Clock::duration left;
  };

  bool isAction() const { return _current < _parts.size(); }
  Part &part() { return _parts[_current]; }

  std::vector<Part> _parts;
  std::size_t _turn = 0;
  std::size_t _current = 0;
  Clock::time_point _begin;
};

// Sends several requests of one kind, and waits for the newest: two processes that take turns for
// every single one would mostly wait for the processor.
Reply askNext(Application &application, Mixture &mixture) {
  Request request = mixture.next();
  try {
    for (int i = 1; i < Load::kAtATime; ++i) {
      application.session().client().send(request);
      request.requestId = nextRequestId();
    }
  } catch (const Error &) {
    // Asking finds out why.
  }
  Reply reply = application.ask(request);
  if (request.actionId == kStateActionId && reply.kind == Reply::Kind::NotRegistered) {
    reply.kind = Reply::Kind::Answered;
  }
  mixture.answered();
  return reply;
}

} // namespace

Load putUnderLoad(Application &application, const std::vector<const ActionUse *> &actions) {
  constexpr std::array<int, 3> kMeasured = {Load::kWarmUp, (Load::kWarmUp + Load::kRequests) / 2,
                                            Load::kRequests};
  Load load;
  load.hasAddressSanitizer = hasAddressSanitizer(application.pid());
  Mixture mixture(actions);
  std::size_t measured = 0;
  while (!load.isComplete()) {
    load.failure = askNext(application, mixture);
    if (!load.failure.isAnswered()) {
      break;
    }
    load.answered += Load::kAtATime;
    if (load.answered == kMeasured[measured]) {
      load.usage[measured++] = {memoryOf(application.pid()), descriptorsOf(application.pid())};
    }
  }
  return load;
}

} // namespace norix::assistant::certify
