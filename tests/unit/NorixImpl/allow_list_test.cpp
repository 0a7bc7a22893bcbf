// SPDX-License-Identifier: Apache-2.0
#include "NorixImpl/messageService.h"

#include "NorixImpl/NorixImpl.h"

#include "fakes/LibraryTest.h"
#include "fakes/LogMatchers.h"

#include <norix.h>

#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <iterator>
#include <ostream>
#include <utility>

namespace {

using fake::IsLine;
using fake::LinesAre;
using fake::ParcelsAre;
using fake::platform;
using testing::Contains;
using testing::IsEmpty;

constexpr const char *kRefused = "com.valtren.tizen.norix is not permitted app id";
constexpr const char *kDropped = "source app is not allowed to send app sdk requests";

class TheAllowList : public fake::LibraryTest {
protected:
  void SetUp() override {
    app.isReady();
    app.registersFor("play");
    assistant.connects();
    forgetCalls();
  }

  // Whether the sender of an assistant may use the library.
  static bool serves(fake::Assistant &sender) {
    sender.registers();
    return sender.results().back() == fake::resultOf(0);
  }

  static bool wasRead() {
    for (const std::string &text : log()) {
      if (text.rfind("res_path : ", 0) == 0) {
        return true;
      }
    }
    return false;
  }
};

TEST_F(TheAllowList, AllowsEverybodyAndIsLookedForEachTimeWhenItIsMissing) {
  fake::Assistant anybody("anybody", "instance-2");
  anybody.connects();
  forgetCalls();

  EXPECT_TRUE(serves(assistant));
  EXPECT_TRUE(serves(anybody));
  EXPECT_TRUE(serves(assistant));

  EXPECT_THAT(log(), Contains("res_path : /nonexistent/allow_list.dat").Times(3));
  EXPECT_THAT(log(), Contains("allow_list.dat file not present, allowing all apps").Times(3));
}

TEST_F(TheAllowList, StandsInItsOwnFolder) {
  NORIX_PROXY_ALLOW_APPID_LIST_PATH = "/usr/share/norix/";

  assistant.registers();

  EXPECT_EQ(log()[1], "res_path : /usr/share/norix/allow_list.dat");
}

TEST_F(TheAllowList, IsFoundByItsNameToo) {
  NORIX_PROXY_ALLOW_APPID_LIST_FILE_NAME = "other.dat";

  assistant.registers();

  EXPECT_EQ(log()[1], "res_path : /nonexistent/other.dat");
  NORIX_PROXY_ALLOW_APPID_LIST_FILE_NAME = "allow_list.dat";
}

TEST_F(TheAllowList, AllowsTheSendersThatItNames) {
  allowListIs("org.example.other\ncom.valtren.tizen.norix\n");

  EXPECT_TRUE(serves(assistant));
  EXPECT_THAT(log(), testing::Not(Contains(kRefused)));
}

TEST_F(TheAllowList, CountsAlsoWithoutAStandardInput) {
  allowListIs("org.example.other\n");
  const int standardInput = dup(STDIN_FILENO);
  close(STDIN_FILENO); // The next file to be opened is number 0.

  const bool isServed = serves(assistant);

  dup2(standardInput, STDIN_FILENO);
  close(standardInput);
  EXPECT_FALSE(isServed);
}

// Counts how often a file has been opened since it was made.
class Openings {
public:
  explicit Openings(const std::string &file) : _notify(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    // Equal events in a row count once, hence those of the closing between them.
    EXPECT_NE(inotify_add_watch(_notify, file.c_str(), IN_OPEN | IN_CLOSE_NOWRITE), -1);
  }
  ~Openings() { close(_notify); }
  Openings(const Openings &) = delete;
  Openings &operator=(const Openings &) = delete;

  std::size_t count() const {
    // An event of a watched file has no name behind it.
    std::array<inotify_event, 64> events = {};
    (void)read(_notify, events.data(), sizeof events);
    return static_cast<std::size_t>(
        std::count_if(events.begin(), events.end(),
                      [](const inotify_event &event) { return (event.mask & IN_OPEN) != 0; }));
  }

private:
  int _notify;
};

TEST_F(TheAllowList, IsOpenedOncePerCheck) {
  allowListIs("");
  const Openings openings(std::string(NORIX_PROXY_ALLOW_APPID_LIST_PATH) + "allow_list.dat");

  EXPECT_FALSE(serves(assistant));
  EXPECT_EQ(openings.count(), 1U);

  EXPECT_FALSE(serves(assistant));
  EXPECT_FALSE(serves(assistant));
  EXPECT_EQ(openings.count(), 2U);
}

// An id behind the error does not count.
TEST_F(TheAllowList, EndsWhereItCannotBeRead) {
  const std::string filler(100, 'x');
  std::string list = "com.valtren.tizen.norix\n";
  while (list.size() < 10000) {
    list += filler + "\n";
  }
  allowListIs(list + "org.example.other\n");
  fake::Assistant other("org.example.other", "instance-2");
  for (fake::Assistant *each : {&assistant, &other}) {
    each->connects();
    platform().faults.fail("read", 2);

    EXPECT_EQ(serves(*each), each == &assistant) << each->sender();
  }
}

// The error comes where the end of the file would be found: the last line may go on behind it.
TEST_F(TheAllowList, HasNoLastLineWithoutANewlineBeforeAnError) {
  allowListIs("com.valtren.tizen.norix\norg.example.other");
  fake::Assistant other("org.example.other", "instance-2");
  for (fake::Assistant *each : {&assistant, &other}) {
    each->connects();
    platform().faults.fail("read", 2);

    EXPECT_EQ(serves(*each), each == &assistant) << each->sender();
  }
}

TEST_F(TheAllowList, IsReadAgainWhenASignalInterruptsIt) {
  allowListIs("com.valtren.tizen.norix\n");
  platform().faults.fail("read", 1, EINTR);

  EXPECT_TRUE(serves(assistant));
}

TEST_F(TheAllowList, IsOpenedAfterItWasNamed) {
  allowListIs("com.valtren.tizen.norix\n");
  inside(std::string("dlog_print(res_path : ") + NORIX_PROXY_ALLOW_APPID_LIST_PATH
             + "allow_list.dat)",
         [this] {
           std::filesystem::remove(std::string(NORIX_PROXY_ALLOW_APPID_LIST_PATH)
                                   + NORIX_PROXY_ALLOW_APPID_LIST_FILE_NAME);
           allowListIs("org.example.other\n");
         });

  EXPECT_FALSE(serves(assistant));
}

TEST_F(TheAllowList, RefusesTheRegistrationOfOthers) {
  allowListIs("org.example.other\n");

  EXPECT_EQ(assistant.registers(), 0);

  EXPECT_THAT(assistant.results(), ParcelsAre({fake::resultOf(-1)}));
  EXPECT_THAT(logLines(),
              LinesAre({IsLine("messageService.cpp", "SetCB", "Call stub SetCB"), testing::_,
                        IsLine("messageService.cpp", "isPermittedSender",
                               "%s is not permitted app id", kRefused)}));
  EXPECT_THAT(norix::NorixImpl::_instance->_responseCbMap, IsEmpty());
}

TEST_F(TheAllowList, RefusesTheUnregistrationOfOthers) {
  assistant.registers();
  allowListIs("org.example.other\n");

  EXPECT_EQ(assistant.unregisters(), 0);

  EXPECT_THAT(assistant.results().back(), fake::resultOf(-1));
  EXPECT_EQ(norix::NorixImpl::_instance->_responseCbMap.size(), 1U);
}

TEST_F(TheAllowList, DropsTheRequestsOfOthers) {
  allowListIs("org.example.other\n");

  EXPECT_EQ(assistant.asksForAction("play", 1), 0);

  EXPECT_THAT(logLines(),
              LinesAre({IsLine("messageService.cpp", "Send", "Call stub Send"), testing::_,
                        IsLine("messageService.cpp", "isPermittedSender",
                               "%s is not permitted app id", kRefused),
                        IsLine("messageService.cpp", "Send", kDropped)}));
  EXPECT_THAT(app.actionRequests, IsEmpty());
  EXPECT_THAT(assistant.results(), IsEmpty());
}

TEST_F(TheAllowList, IsReadOncePerConnectionWhenItHasALine) {
  allowListIs("com.valtren.tizen.norix\n");
  EXPECT_TRUE(serves(assistant));
  allowListIs("org.example.other\n");
  forgetCalls();

  EXPECT_TRUE(serves(assistant));

  EXPECT_FALSE(wasRead());
}

TEST_F(TheAllowList, IsReadAgainByTheNextConnection) {
  allowListIs("org.example.other\n");
  EXPECT_FALSE(serves(assistant));
  allowListIs("com.valtren.tizen.norix\n");
  EXPECT_FALSE(serves(assistant));

  assistant.disconnects();
  assistant.connects();

  EXPECT_TRUE(serves(assistant));
}

TEST_F(TheAllowList, RefusesEverybodyAndIsReadEachTimeWhenItIsEmpty) {
  allowListIs("");
  EXPECT_FALSE(serves(assistant));
  forgetCalls();

  EXPECT_FALSE(serves(assistant));
  EXPECT_TRUE(wasRead());

  allowListIs("com.valtren.tizen.norix\n");
  EXPECT_TRUE(serves(assistant));
}

TEST_F(TheAllowList, CountsFromTheMomentItAppears) {
  EXPECT_TRUE(serves(assistant));

  allowListIs("org.example.other\n");

  EXPECT_FALSE(serves(assistant));
}

TEST_F(TheAllowList, IsMissingWhenItCannotBeOpened) {
  allowListIs("org.example.other\n");
  // A file that cannot be opened even by root: a loop of links.
  const std::filesystem::path file =
      std::string(NORIX_PROXY_ALLOW_APPID_LIST_PATH) + NORIX_PROXY_ALLOW_APPID_LIST_FILE_NAME;
  std::filesystem::remove(file);
  std::filesystem::create_symlink(file.filename(), file);

  EXPECT_TRUE(serves(assistant));

  EXPECT_THAT(log(), Contains("allow_list.dat file not present, allowing all apps"));
}

// A folder can be opened but not read: the lines read until then are the list, and there are none.
TEST_F(TheAllowList, RefusesEverybodyWhenItCannotBeRead) {
  allowListIs("");
  const std::filesystem::path file =
      std::string(NORIX_PROXY_ALLOW_APPID_LIST_PATH) + NORIX_PROXY_ALLOW_APPID_LIST_FILE_NAME;
  std::filesystem::remove(file);
  std::filesystem::create_directory(file);

  EXPECT_FALSE(serves(assistant));
}

// The platform's ids are C texts: a sender with a NUL inside counts up to it.
TEST_F(TheAllowList, TakesASenderUpToItsFirstNul) {
  allowListIs("com.valtren.tizen.norix\n");
  const auto isPermitted = [](const std::string &sender) {
    return fake::library(
        [&] { return norix::messageService(sender, "instance").isPermittedSender(); });
  };

  EXPECT_TRUE(isPermitted(std::string("com.valtren.tizen.norix\0.other", 30)));
  EXPECT_FALSE(isPermitted(std::string("com\0.valtren.tizen.norix", 24)));
  EXPECT_EQ(log().back(), "com is not permitted app id");
}

TEST_F(TheAllowList, IsClosedWheneverItWasRead) {
  const auto openFiles = [] {
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return std::distance(begin(files), end(files));
  };
  allowListIs("");
  const auto before = openFiles();

  EXPECT_FALSE(serves(assistant)); // read to its end at once
  EXPECT_FALSE(serves(assistant));
  allowListIs("com.valtren.tizen.norix\norg.example.other\n");
  EXPECT_TRUE(serves(assistant));

  EXPECT_EQ(openFiles(), before);
}

TEST_F(TheAllowList, IsLookedForInTheMiddleOfEachOfTheThreeCalls) {
  allowListIs("");

  assistant.registers();
  assistant.unregisters();
  assistant.asksForState(1);

  EXPECT_THAT(log(), Contains(kRefused).Times(3));
  EXPECT_THAT(log(), Contains(kDropped).Times(1));
}

// The lines that a connection has read stay valid for it.
TEST_F(TheAllowList, StaysAsItWasReadWhenItIsTakenAway) {
  allowListIs("org.example.other\n");
  EXPECT_FALSE(serves(assistant));
  std::filesystem::remove(std::string(NORIX_PROXY_ALLOW_APPID_LIST_PATH)
                          + NORIX_PROXY_ALLOW_APPID_LIST_FILE_NAME);

  EXPECT_FALSE(serves(assistant));
  assistant.disconnects();
  assistant.connects();
  EXPECT_TRUE(serves(assistant));
}

// The assistant's own id is no exception, and the constant that holds it is not read.
TEST_F(TheAllowList, KnowsNoApplicationByItself) {
  const char *const name = std::exchange(NORIX_PROXY_APP_NAME, "org.example.other");
  fake::Assistant other("org.example.other", "instance-2");
  other.connects();
  allowListIs("com.valtren.tizen.norix\n");

  EXPECT_TRUE(serves(assistant));
  EXPECT_FALSE(serves(other));

  NORIX_PROXY_APP_NAME = name;
}

struct Content {
  const char *name;
  std::string content;
  bool allowed;
  std::string sender = fake::kAssistantId;
};

void PrintTo(const Content &row, std::ostream *out) {
  *out << row.name;
}

class AnAllowListLine : public TheAllowList, public testing::WithParamInterface<Content> {};

TEST_P(AnAllowListLine, DecidesByItsExactText) {
  fake::Assistant sender(GetParam().sender, "instance-2");
  sender.connects();
  allowListIs(GetParam().content);

  EXPECT_EQ(serves(sender), GetParam().allowed);
  EXPECT_EQ(serves(sender), GetParam().allowed);
}

INSTANTIATE_TEST_SUITE_P(
    , AnAllowListLine,
    testing::Values(
        Content{"Alone", "com.valtren.tizen.norix\n", true},
        Content{"WithoutANewline", "com.valtren.tizen.norix", true},
        Content{"AfterAnother", "a\ncom.valtren.tizen.norix", true},
        Content{"AfterAnEmptyOne", "\ncom.valtren.tizen.norix\n", true},
        Content{"Twice", "com.valtren.tizen.norix\ncom.valtren.tizen.norix\n", true},
        Content{"WithACarriageReturn", "com.valtren.tizen.norix\r\n", false},
        Content{"WithABlankBefore", " com.valtren.tizen.norix\n", false},
        Content{"WithABlankBehind", "com.valtren.tizen.norix \n", false},
        Content{"InAnotherLetterCase", "Com.valtren.tizen.norix\n", false},
        Content{"ThatIsLonger", "com.valtren.tizen.norix.other\n", false},
        Content{"ThatIsShorter", "com.valtren.tizen\n", false},
        Content{"WithAHashMark", "#com.valtren.tizen.norix\n", false},
        Content{"ThatIsEmpty", "\n", false},
        Content{"ThatIsEmptyForASenderWithoutAnId", "\n", true, ""},
        Content{"WithoutAnEmptyOneForASenderWithoutAnId", "a\n", false, ""},
        Content{"WithANulInside", std::string("com.valtren.tizen.norix\0\n", 25), false},
        Content{"ThatIsNoUtf8", "\xff\xfe\n", true, "\xff\xfe"},
        Content{"OfAMebibyte", std::string(1 << 20, 'x') + "\ncom.valtren.tizen.norix\n", true}),
    [](const auto &tested) { return std::string(tested.param.name); });

} // namespace
