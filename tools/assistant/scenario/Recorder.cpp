// SPDX-License-Identifier: Apache-2.0
#include "assistant/scenario/Recorder.h"

#include "assistant/actions/parseShallow.h"
#include "assistant/client/Request.h"
#include "assistant/scenario/Scenario.h"
#include "assistant/trace/logTexts.h"
#include "assistant/trace/names.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <sstream>
#include <utility>

namespace norix::assistant::scenario {
namespace {

// A machine that is busy takes many times as long.
constexpr double kShortestBound = 2.0;
constexpr double kSlack = 10.0;
constexpr const char *kSuperseded = "superseded";
// Shorter texts come up by chance.
constexpr std::size_t kShortestCapture = 4;

std::string inQuotes(const std::string &text) {
  std::string escaped;
  for (std::size_t i = 0; i < text.size(); ++i) {
    escaped += text.compare(i, 2, "${") == 0 ? "$$" : std::string(1, text[i]);
  }
  return Json(escaped).dump(-1, ' ', true, Json::error_handler_t::replace);
}

} // namespace

void Recorder::see(const trace::Event &event) {
  if (event.name == "received") {
    Recorded request;
    request.sender = _sender;
    request.action = event.text("action");
    request.type = event.text("type");
    request.params = event.text("params");
    request.received = event.time;
    _requests.push_back(std::move(request));
  } else if (event.name == "call" && trace::isAnswer(event.text("function"))
             && event.number("result") == 0) {
    finish("answered", event.text("text"), event.time);
  } else if (event.name == "finding") {
    _allowsFindings = true;
  } else if (event.name == "log") {
    seeLog(event);
  }
}

void Recorder::seeLog(const trace::Event &event) {
  const trace::LogMeaning meaning = trace::meaningOf(event);
  if (meaning.kind == trace::LogKind::Sender) {
    _sender = meaning.detail;
  } else if (!_requests.empty()) {
    const std::string kind = _requests.back().action == kStateActionId ? "state" : "action";
    if (meaning.kind == trace::LogKind::TimedOut) {
      finish(kind + "-timed-out", "", event.time);
    } else if (meaning.kind == trace::LogKind::NotRegistered) {
      finish(kind + "-not-registered", "", event.time);
    }
  }
}

void Recorder::add(Recorded exchange) {
  _requests.push_back(std::move(exchange));
  _allowsFindings = true;
}

// Only the newest request can come to anything, and only once.
void Recorder::finish(const std::string &outcome, const std::string &text, std::uint64_t time) {
  if (_requests.empty() || _requests.back().outcome != kSuperseded) {
    return;
  }
  Recorded &request = _requests.back();
  request.outcome = outcome;
  request.text = text;
  request.seconds = static_cast<double>(time - request.received) / 1e9;
}

/// Puts what was recorded into words.
class RecordingWriter {
public:
  explicit RecordingWriter(const Recorder &recorder) : _recorder(recorder) { findCaptures(); }

  std::string write(const std::string &folder) {
    _text << "name: Recorded\n";
    if (!folder.empty()) {
      _text << "application: {folder: " << inQuotes(folder) << "}\n";
    }
    writeSenders();
    if (_recorder._allowsFindings) {
      _text << "findings: any\n";
    }
    _text << "steps:\n";
    for (std::size_t i = 0; i < _recorder._requests.size(); ++i) {
      writeStep(i);
    }
    return _text.str();
  }

private:
  using Recorded = Recorder::Recorded;

  /// A value that is kept of one answer.
  struct Kept {
    std::string name;
    std::string pointer;
    std::string value;
  };

  void writeSenders() {
    for (const Recorded &request : _recorder._requests) {
      _senders.emplace(request.sender, "sender" + std::to_string(_senders.size() + 1));
    }
    _text << "senders:\n";
    for (const auto &[appId, name] : _senders) {
      _text << "  " << name << ": {id: " << inQuotes(appId) << "}\n";
    }
  }

  void writeStep(std::size_t number) {
    const Recorded &request = _recorder._requests[number];
    const bool isState = request.action == kStateActionId;
    _text << (isState ? std::string("  - state:\n")
                      : "  - run: " + inQuotes(request.action) + "\n");
    _text << "    sender: " << _senders.at(request.sender) << "\n";
    if (!isState) {
      writeParameters(request);
    }
    if (request.outcome == kSuperseded) {
      _text << "    as: request" << number << "\n";
      _awaited.push_back(number);
    } else {
      writeExpectation(number);
      writeAwaited();
    }
  }

  void writeParameters(const Recorded &request) {
    if (!request.type.empty()) {
      _text << "    type: " << inQuotes(request.type) << "\n";
    }
    const Json params = actions::parseShallow<Json>(request.params);
    if (params.is_structured()) {
      _text << "    params: " << withNames(params) << "\n";
    } else {
      _text << "    params-text: " << inQuotes(request.params) << "\n";
    }
  }

  void writeExpectation(std::size_t number) {
    const Recorded &request = _recorder._requests[number];
    const double bound = std::max(kShortestBound, std::ceil(request.seconds * kSlack));
    _text << "    expect:\n      outcome: " << request.outcome << "\n      within: " << bound
          << " s\n";
    if (request.outcome == "answered") {
      writeAnswer(number);
    }
  }

  // JSON is compared member by member, but for what is kept because it may be another one.
  void writeAnswer(std::size_t number) {
    const Recorded &request = _recorder._requests[number];
    const Json answer = actions::parseShallow<Json>(request.text);
    if (!answer.is_object()) {
      _text << "      text: " << inQuotes(request.text) << "\n";
      return;
    }
    std::string members;
    for (const auto &[key, value] : answer.items()) {
      const std::string pointer = pointerTo(key);
      if (!isKept(number, pointer)) {
        members += "        " + inQuotes(pointer) + ": " + withNames(value) + "\n";
      }
    }
    _text << (members.empty() ? "" : "      json:\n" + members);
    writeCaptures(number);
  }

  void writeCaptures(std::size_t number) {
    const auto kept = _kept.find(number);
    if (kept == _kept.end()) {
      return;
    }
    _text << "    capture:\n";
    for (const Kept &value : kept->second) {
      _text << "      " << value.name << ": " << inQuotes(value.pointer) << "\n";
      _known[value.value] = value.name;
    }
  }

  // What a newer request has replaced, after it was answered.
  void writeAwaited() {
    for (const std::size_t number : _awaited) {
      _text << "  - await: request" << number << "\n    expect: {outcome: superseded}\n";
    }
    _awaited.clear();
  }

  static std::string pointerTo(const std::string &key) {
    std::string pointer = "/";
    for (const char c : key) {
      pointer += c == '~' ? "~0" : c == '/' ? "~1" : std::string(1, c);
    }
    return pointer;
  }

  bool isKept(std::size_t number, const std::string &pointer) const {
    const auto kept = _kept.find(number);
    return kept != _kept.end()
           && std::any_of(kept->second.begin(), kept->second.end(),
                          [&pointer](const Kept &value) { return value.pointer == pointer; });
  }

  // Texts of answers that a later request sends.
  void findCaptures() {
    const auto &requests = _recorder._requests;
    std::set<std::string> seen;
    for (std::size_t i = 0; i < requests.size(); ++i) {
      const Json answer = actions::parseShallow<Json>(requests[i].text);
      if (!answer.is_object()) {
        continue;
      }
      for (const auto &[key, value] : answer.items()) {
        if (value.is_string() && isSentAfter(i, value) && seen.insert(value).second) {
          _kept[i].push_back({"value" + std::to_string(seen.size()), pointerTo(key), value});
        }
      }
    }
  }

  bool isSentAfter(std::size_t number, const std::string &text) const {
    const auto &requests = _recorder._requests;
    return text.size() >= kShortestCapture
           && std::any_of(requests.begin() + static_cast<std::ptrdiff_t>(number) + 1,
                          requests.end(), [&text](const Recorded &later) {
                            const Json params = actions::parseShallow<Json>(later.params);
                            return params.is_structured()
                                   && later.params.find(Json(text).dump(
                                          -1, ' ', false, Json::error_handler_t::replace))
                                          != std::string::npos;
                          });
  }

  // A value in JSON, with the names of what was kept in the place of its texts.
  std::string withNames(const Json &value) const {
    if (value.is_string()) {
      const auto known = _known.find(value.get<std::string>());
      return known == _known.end() ? inQuotes(value.get<std::string>())
                                   : "\"${" + known->second + "}\"";
    }
    if (!value.is_structured()) {
      return value.dump();
    }
    std::string text;
    for (const auto &[key, member] : value.items()) {
      text += (text.empty() ? "" : ", ")
              + (value.is_object()
                     ? Json(key).dump(-1, ' ', true, Json::error_handler_t::replace) + ": "
                     : std::string())
              + withNames(member);
    }
    return value.is_object() ? "{" + text + "}" : "[" + text + "]";
  }

  const Recorder &_recorder;
  std::ostringstream _text;
  std::map<std::string, std::string> _senders;
  std::map<std::size_t, std::vector<Kept>> _kept;
  // The names of the values that were kept so far.
  std::map<std::string, std::string> _known;
  std::vector<std::size_t> _awaited;
};

std::string Recorder::write(const std::string &folder) const {
  return RecordingWriter(*this).write(folder);
}

} // namespace norix::assistant::scenario
