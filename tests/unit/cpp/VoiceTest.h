// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_UNIT_CPP_VOICETEST_H
#define NORIX_TESTS_UNIT_CPP_VOICETEST_H

#include "MainLoop.h"

#include "fakes/LibraryTest.h"

#include <norix.hpp>

#include <gmock/gmock.h>

#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

// An application in C++ with a norix::Assistant, and an assistant that is connected to it.
class VoiceTest : public fake::LibraryTest {
protected:
  void SetUp() override {
    voice.emplace();
    assistant.isReady();
  }

  void TearDown() override {
    kept.clear();
    voice.reset();
    fake::dropCallsOfThreads();
    LibraryTest::TearDown();
  }

  // An action whose requests are kept for later.
  void keepsRequestsOf(const std::string &actionId) {
    voice->onAction(actionId, [this](norix::Request request) {
      const fake::OutsideLibrary outside;
      kept.push_back(std::move(request));
    });
  }

  // The lines of this interface in the platform log.
  static std::vector<std::string> complaints() {
    std::vector<std::string> found;
    for (const fake::LogLine &line : logLines()) {
      if (line.tag == norix::detail::kLogTag) {
        found.push_back(line.text);
      }
    }
    return found;
  }

  std::optional<norix::Assistant> voice;
  std::vector<norix::Request> kept;
};

// Runs it on another thread, to its end.
template <typename Work>
void onAnotherThread(Work work) {
  std::thread(std::move(work)).join();
}

// Answers where no compiler sees whether the request is spent.
norix::Outcome answer(norix::Request &request, const std::string &text);

#endif
