// SPDX-License-Identifier: Apache-2.0
//
// norix_soak_assistant TARGET TALLY SEED
//
// Connects to the example application TARGET, sends some requests, disconnects, and begins again,
// until it is killed. The soak kills the music now and then, so its connections may break; the
// light's may not. Neither may leave a request unanswered while the connection stands, nor answer
// it wrongly.
#include "assistant/client/MainLoop.h"
#include "assistant/client/Session.h"
#include "soak/Tally.h"

#include <array>
#include <exception>
#include <iostream>
#include <poll.h>
#include <random>
#include <string>

namespace {

using norix::assistant::actionRequest;
using norix::assistant::Answer;
using norix::assistant::Error;
using norix::assistant::Failure;
using norix::assistant::Session;
using norix::assistant::stateRequest;
using soak::Tally;

constexpr const char *kMusicId = "org.example.music";
constexpr double kPatience = 20.0;     // Far more than any answer takes.
constexpr int kMostQuestions = 40;     // Per connection.
constexpr int kPauseMilliseconds = 20; // Before somebody who does not listen is asked again.

// What each example answers at once.
struct Repertoire {
  std::string state; // How the state begins.
  std::array<std::array<std::string, 2>, 2> actions;
};

const Repertoire kLight = {"{\"light\":",
                           {{{"lightOn", "The light is on"}, {"lightOff", "The light is off"}}}};
const Repertoire kMusic = {"{\"playing\":",
                           {{{"musicPlay", "Playing "}, {"musicPause", "The music is paused"}}}};

bool beginsWith(const std::string &text, const std::string &beginning) {
  return text.compare(0, beginning.size(), beginning) == 0;
}

bool isTheEndOfAConnection(const Error &error) {
  return error.failure() == Failure::CannotConnect || error.failure() == Failure::Disconnected;
}

void complain(Tally &tally, const std::string &what) {
  ++tally.failures;
  std::cerr << what << std::endl;
}

void ask(Session &session, Tally &tally, const Repertoire &repertoire, unsigned choice) {
  const bool asksState = choice >= repertoire.actions.size();
  const auto request = asksState ? stateRequest() : actionRequest(repertoire.actions.at(choice)[0]);
  const std::string &expected = asksState ? repertoire.state : repertoire.actions.at(choice)[1];
  const Answer answer = session.ask(request, kPatience);
  if (!answer.response.succeeded() || !beginsWith(answer.response.text(), expected)) {
    complain(tally, request.actionId + " is answered '" + answer.response.text() + "' ("
                        + answer.response.statusMessage() + ")");
  } else {
    ++tally.requests;
  }
}

void converse(const std::string &target, Tally &tally, std::mt19937 &random) {
  Session session(target, kPatience);
  ++tally.connections;
  const Repertoire &repertoire = target == kMusicId ? kMusic : kLight;
  const auto questions = random() % kMostQuestions;
  for (unsigned i = 0; i < questions; ++i) {
    ask(session, tally, repertoire, static_cast<unsigned>(random() % 3));
  }
}

} // namespace

int main(int argc, char **argv) try {
  if (argc != 4) {
    return 2;
  }
  const std::string target = argv[1];
  Tally &tally = Tally::in(argv[2]);
  std::mt19937 random(static_cast<std::mt19937::result_type>(std::stoul(argv[3])));
  const bool isKilledAtTimes = target == kMusicId;
  const norix::assistant::MainLoop loop;
  for (;;) {
    try {
      converse(target, tally, random);
    } catch (const Error &error) {
      if (!isKilledAtTimes || !isTheEndOfAConnection(error)) {
        complain(tally, error.what());
      }
      poll(nullptr, 0, kPauseMilliseconds);
    }
  }
} catch (const std::exception &error) {
  std::cerr << error.what() << std::endl;
  return 1;
}
