// SPDX-License-Identifier: Apache-2.0
#include "NorixImpl/messageService.h"

#include "NorixImpl/NorixImpl.h"

#include "fakes/Heap.h"
#include "fakes/LibraryTest.h"
#include "fakes/LogMatchers.h"

#include <new>
#include <utility>

namespace {

using fake::IsLine;
using fake::LinesAre;
using fake::ParcelsAre;
using fake::platform;
using fake::TextsAre;
using norix::NorixImpl;
using testing::IsEmpty;

constexpr const char *kNoFile = "allow_list.dat file not present, allowing all apps";
constexpr const char *kPath = "res_path : /nonexistent/allow_list.dat";

auto isServiceLine(const char *function, const char *text) {
  return IsLine("messageService.cpp", function, text);
}

class TheMessageService : public fake::LibraryTest {
protected:
  void SetUp() override {
    app.isReady();
    assistant.connects();
    forgetCalls();
  }

  static auto &delegates() { return NorixImpl::_instance->_responseCbMap; }
};

TEST_F(TheMessageService, IsMadeForEachConnection) {
  fake::Assistant("org.example.other", "instance-2").connects();

  EXPECT_THAT(logLines(), LinesAre({IsLine("messageService.cpp", "CreateService",
                                           "Call stub CreateService Sender:%s",
                                           "Call stub CreateService Sender:org.example.other"),
                                    isServiceLine("OnCreate", "Call stub OnCreate")}));
}

TEST_F(TheMessageService, KeepsTheDelegateOfItsSender) {
  EXPECT_EQ(assistant.registers(), 0);

  EXPECT_THAT(logLines(),
              LinesAre({isServiceLine("SetCB", "Call stub SetCB"),
                        IsLine("messageService.cpp", "isPermittedSender", "res_path : %s", kPath),
                        isServiceLine("isPermittedSender", kNoFile)}));
  EXPECT_EQ(delegates().count(fake::kAssistantId), 1U);
  EXPECT_THAT(assistant.results(), ParcelsAre({fake::resultOf(0)}));
}

TEST_F(TheMessageService, ReplacesTheDelegateOfItsSender) {
  assistant.registers({1, 7, false});
  assistant.registers({1, 8, true});

  EXPECT_EQ(delegates().size(), 1U);
  EXPECT_EQ(delegates().at(fake::kAssistantId)->GetSeqId(), 8);
  EXPECT_THAT(assistant.results(), ParcelsAre({fake::resultOf(0), fake::resultOf(0)}));
}

// The old one goes first: a proxy that registers again does not want it any more, whatever becomes
// of the new one.
TEST_F(TheMessageService, DropsTheDelegateOfItsSenderBeforeItKeepsTheNewOne) {
  assistant.registers({1, 7, false});
  // The allocation that fails is the entry of the new one.
  inside("dlog_print(allow_list.dat file not present, allowing all apps)",
         [] { fake::Heap::instance().failNew(1); });

  EXPECT_EQ(assistant.registers({1, 8, false}), 0);

  EXPECT_THAT(delegates(), IsEmpty());
  EXPECT_THAT(assistant.results().back(), fake::resultOf(-1));
  EXPECT_EQ(assistant.registers({1, 8, false}), 0);
  EXPECT_EQ(delegates().at(fake::kAssistantId)->GetSeqId(), 8);
}

TEST_F(TheMessageService, KeepsTheDelegateOfItsSenderUnderItsWholeId) {
  fake::Assistant other("com.valtren.tizen.Norix", "instance-2");
  other.connects();

  assistant.registers({1, 7, false});
  other.registers({1, 8, false});
  other.unregisters();

  ASSERT_EQ(delegates().size(), 1U);
  EXPECT_EQ(delegates().at(fake::kAssistantId)->GetSeqId(), 7);
}

TEST_F(TheMessageService, SharesTheDelegateOfItsSenderWithItsOtherConnections) {
  fake::Assistant again(fake::kAssistantId, "instance-2");
  again.connects();
  assistant.registers({1, 7, false});

  again.registers({1, 8, false});
  EXPECT_EQ(delegates().at(fake::kAssistantId)->GetSeqId(), 8);
  assistant.unregisters();

  EXPECT_THAT(delegates(), IsEmpty());
}

TEST_F(TheMessageService, KeepsOneDelegatePerSender) {
  fake::Assistant other("org.example.other", "instance-2");
  other.connects();

  assistant.registers({1, 7, false});
  other.registers({1, 8, false});

  EXPECT_EQ(delegates().size(), 2U);
  EXPECT_EQ(delegates().at("org.example.other")->GetSeqId(), 8);
}

TEST_F(TheMessageService, DropsTheDelegateOfItsSender) {
  assistant.registers();
  forgetCalls();

  EXPECT_EQ(assistant.unregisters(), 0);

  EXPECT_THAT(log(), TextsAre({"Call stub UnsetCB", kPath, kNoFile}));
  EXPECT_EQ(logLines()[0].function, "UnsetCB");
  EXPECT_THAT(delegates(), IsEmpty());
  EXPECT_THAT(assistant.results(), ParcelsAre({fake::resultOf(0), fake::resultOf(0)}));
}

TEST_F(TheMessageService, DropsADelegateThatIsNotThere) {
  EXPECT_EQ(assistant.unregisters(), 0);

  EXPECT_THAT(assistant.results(), ParcelsAre({fake::resultOf(0)}));
}

TEST_F(TheMessageService, LeavesTheDelegateWhenTheConnectionEnds) {
  assistant.registers();
  forgetCalls();

  assistant.disconnects();

  EXPECT_THAT(logLines(), LinesAre({isServiceLine("OnTerminate", "Call stub OnTerminate")}));
  EXPECT_EQ(delegates().size(), 1U);
}

TEST_F(TheMessageService, PassesARequestOn) {
  EXPECT_EQ(assistant.sends({}), 0);

  EXPECT_THAT(logLines(),
              LinesAre({isServiceLine("Send", "Call stub Send"),
                        IsLine("messageService.cpp", "isPermittedSender", "res_path : %s", kPath),
                        isServiceLine("isPermittedSender", kNoFile),
                        IsLine("messageService.cpp", "Send", "Call stub Sender %s",
                               "Call stub Sender com.valtren.tizen.norix"),
                        IsLine("NorixImpl.cpp", "executeRequest", "actionId is null")}));
  EXPECT_THAT(assistant.results(), IsEmpty());
}

TEST_F(TheMessageService, LogsTheSenderBeforeItLooksForTheCore) {
  NorixImpl *core = nullptr;
  inside("dlog_print(Call stub Sender com.valtren.tizen.norix)",
         [&core] { core = std::exchange(NorixImpl::_instance, nullptr); });

  EXPECT_EQ(assistant.asksForState(1), 0);

  NorixImpl::_instance = core;
  EXPECT_THAT(logLines().back(), isServiceLine("Send", "NorixImpl instance is null"));
}

// The object went missing after the connection was made.
class AServiceWithoutTheCore : public TheMessageService {
protected:
  void SetUp() override {
    TheMessageService::SetUp();
    assistant.registers();
    forgetCalls();
    _core = std::exchange(NorixImpl::_instance, nullptr);
  }
  void TearDown() override {
    NorixImpl::_instance = _core;
    TheMessageService::TearDown();
  }

  NorixImpl *_core = nullptr;
};

TEST_F(AServiceWithoutTheCore, RefusesADelegate) {
  EXPECT_EQ(assistant.registers(), 0);

  EXPECT_THAT(logLines().back(), isServiceLine("SetCB", "NorixImpl instance is null"));
  EXPECT_EQ(log().size(), 4U);
  EXPECT_THAT(assistant.results().back(), fake::resultOf(-1));
}

TEST_F(AServiceWithoutTheCore, RefusesToDropADelegate) {
  EXPECT_EQ(assistant.unregisters(), 0);

  EXPECT_THAT(logLines().back(), isServiceLine("UnsetCB", "NorixImpl instance is null"));
  EXPECT_THAT(assistant.results().back(), fake::resultOf(-1));
}

TEST_F(AServiceWithoutTheCore, DropsARequest) {
  EXPECT_EQ(assistant.asksForState(1), 0);

  EXPECT_THAT(logLines().back(), isServiceLine("Send", "NorixImpl instance is null"));
  EXPECT_THAT(log(),
              TextsAre({"Call stub Send", kPath, kNoFile,
                        "Call stub Sender com.valtren.tizen.norix", "NorixImpl instance is null"}));
}

} // namespace
