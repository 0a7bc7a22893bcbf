// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FAKES_LIBRARY_TEST_H
#define NORIX_FAKES_LIBRARY_TEST_H

#include "fakes/App.h"
#include "fakes/Assistant.h"
#include "fakes/Matchers.h"
#include "fakes/Platform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace fake {

inline constexpr const char *kAppId = "org.example.music";

/// Destroys the library's objects and fails the running test once for everything that is left then,
/// and for every misuse.
void reportWhatIsLeft();

/// A fresh platform and a fresh library: an application with an id and a usable SDK version, no
/// allow list, and nothing called yet.
void startAnew();

/// Fails the test for what the library left behind or did wrong on the way. It is a base of its
/// own, so that it looks when everything that belongs to the test is gone.
class NothingLeft : public testing::Test {
protected:
  NothingLeft();
  ~NothingLeft() override;

private:
  const char *_allowListPath;
};

/// The library on a fresh platform. After the test the library is deinitialised.
class LibraryTest : public NothingLeft {
protected:
  void TearDown() override;

  /// One hour: longer than any timer of the library.
  static constexpr double kLong = 3600;

  /// The allow list, as if it stood in its place.
  void allowListIs(const std::string &content);
  void expectLeft(DeliberateLeak leak, std::size_t times = 1);
  /// Runs an action inside the next call of the platform with this entry in the journal, for
  /// example "dlog_print(Response success)".
  static void inside(const std::string &call, const std::function<void()> &action);
  /// Forgets what was recorded so far.
  static void forgetCalls();
  static std::vector<std::string> log() { return platform().log.texts(); }
  static const std::vector<LogLine> &logLines() { return platform().log.lines(); }
  static std::vector<std::string> calls(std::initializer_list<std::string_view> functions) {
    return platform().journal.of(functions);
  }

  App app;
  Assistant assistant;

private:
  std::string _allowListFolder;
};

/// Most tests: initialised, and an assistant that is connected and registered.
class ReadyLibraryTest : public LibraryTest {
protected:
  void SetUp() override;
};

} // namespace fake

#endif
