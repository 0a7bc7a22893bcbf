// SPDX-License-Identifier: Apache-2.0
//
// The bytes of an agent. Every message of the bridge is one line of JSON-RPC, no request is
// answered twice, and nothing is sent for one that was cancelled.
#include "support/check.h"

#include "assistant/actions/Declarations.h"
#include "assistant/client/MainLoop.h"
#include "assistant/mcp/LineReader.h"
#include "assistant/mcp/Server.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace norix::assistant;
using namespace norix::assistant::mcp;
using fuzz::check;

constexpr std::size_t kLineBytes = 1024;

constexpr const char *kDeclarations = R"({"version": 1, "actions": [
  {"id": "a", "title": "A", "description": "Does it",
   "parameters": {"type": "object", "properties": {"n": {"type": "integer"}}},
   "utterances": ["a {n}"]},
  {"id": "b", "title": "B", "description": "Undoes it", "confirm": true}]})";

Catalogue catalogue() {
  return makeCatalogue({{"org.example.f", actions::parse(kDeclarations).declarations}}, false);
}

/// The client's view: how often each id has been asked and answered.
class Client {
public:
  void sent(const Json &message) {
    const std::string line = toLine(message);
    check(line.find_first_of("\r\n") == std::string::npos, "a message is one line");
    const Json again = parseJson(line);
    check(again.value("jsonrpc", Json()) == "2.0", "a message is of JSON-RPC 2.0");
    if (again.contains("method")) {
      return;
    }
    check(again.contains("result") != again.contains("error"), "an answer is one of the two");
    check(again.contains("id"), "an answer has an id");
    if (!again.at("id").is_null()) {
      check(++_answered[toLine(again.at("id"))] <= _asked[toLine(again.at("id"))],
            "a request is answered at most once");
    }
  }

  void asked(std::string_view line) {
    try {
      const Message message = parseMessage(line);
      ++_asked[toLine(message.id)];
    } catch (const BadMessage &error) {
      ++_asked[toLine(error.id())];
    }
  }

private:
  std::map<std::string, int> _asked;
  std::map<std::string, int> _answered;
};

/// The applications: they keep every second request until the end.
class Applications {
public:
  Server::Ticket execute(const Work &work, Done done) {
    check(work.isState() || !work.actionId.empty(), "a request names its action");
    _done.push_back(std::move(done));
    if (_done.size() % 2 == 0) {
      _done.back()({Outcome::Kind::Answered, work.params});
    }
    return _done.size() - 1;
  }

  void answerAll() {
    for (std::size_t index = 0; index < _done.size(); index += 2) {
      _done[index]({Outcome::Kind::Unknown, "\x1b"});
    }
  }

private:
  std::vector<Done> _done;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  static const MainLoop loop;
  Client client;
  Applications applications;
  Server server({"1"},
                {[&client](const Json &message) { client.sent(message); },
                 [](const std::string & /*line*/) {},
                 [&applications](const std::string & /*appId*/, const Work &work, Done done) {
                   return applications.execute(work, std::move(done));
                 },
                 [](const std::string & /*appId*/, Server::Ticket /*ticket*/) {}},
                catalogue());
  LineReader reader(kLineBytes, {[&](std::string_view line) {
                                   client.asked(line);
                                   server.receive(line);
                                 },
                                 [&server] { server.refuseLongLine(kLineBytes); }});

  reader.feed({reinterpret_cast<const char *>(data), size});
  reader.finish();
  server.replaceCatalogue(catalogue());
  applications.answerAll();
  return 0;
}
