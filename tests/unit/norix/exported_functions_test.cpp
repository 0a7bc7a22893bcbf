// SPDX-License-Identifier: Apache-2.0
#include "exported_calls.h"

#include "fakes/Heap.h"
#include "fakes/LibraryTest.h"
#include "fakes/LogMatchers.h"

#include <norix.h>

#include <new>
#include <ostream>
#include <stdexcept>

namespace {

using fake::IsLine;
using fake::LinesAre;
using fake::platform;
using fake::ResponsesAre;
using fake::TextsAre;
using testing::IsEmpty;

void noState(void * /*handle*/, void * /*data*/) {}
void noAction(void * /*handle*/, bundle * /*params*/, void * /*data*/) {}

// The library's own object could not be allocated by the first call.
class WithoutTheCoreObject : public fake::LibraryTest,
                             public testing::WithParamInterface<ExportedCall> {
protected:
  void SetUp() override { platform().faults.fail(fake::kNothrowNew); }

  static const char *expectedText() {
    return GetParam().function == "norix_deinitialize"
               ? "NorixImpl instance is null. Not initialized"
               : "NorixImpl instance is null";
  }
};

TEST_P(WithoutTheCoreObject, EveryCallIsOutOfMemory) {
  EXPECT_EQ(GetParam().call(nullptr), NORIX_ERROR_OUT_OF_MEMORY);

  EXPECT_THAT(logLines(), LinesAre({IsLine("norix.cpp", GetParam().function, expectedText())}));
}

TEST_P(WithoutTheCoreObject, EveryLaterCallIsOutOfMemoryToo) {
  (void)norix_initialize();
  forgetCalls();

  EXPECT_EQ(GetParam().call(nullptr), NORIX_ERROR_OUT_OF_MEMORY);

  EXPECT_THAT(logLines(), LinesAre({IsLine("norix.cpp", GetParam().function, expectedText())}));
  EXPECT_EQ(platform().journal.count(fake::kNothrowNew), 0);
}

INSTANTIATE_TEST_SUITE_P(OfTheNine, WithoutTheCoreObject, testing::ValuesIn(exportedCalls()),
                         testing::PrintToStringParamName());

class WithoutTheCoreObjectAndArguments : public fake::LibraryTest {};

TEST_F(WithoutTheCoreObjectAndArguments, TheInstanceIsCheckedFirst) {
  platform().faults.fail(fake::kNothrowNew);

  EXPECT_EQ(norix_set_action_execution_cb(nullptr, nullptr, nullptr), NORIX_ERROR_OUT_OF_MEMORY);
  EXPECT_EQ(norix_unset_action_execution_cb(nullptr), NORIX_ERROR_OUT_OF_MEMORY);
  EXPECT_EQ(norix_get_action_name(nullptr, nullptr), NORIX_ERROR_OUT_OF_MEMORY);
}

// Each function forwards and returns what it was given: before initialisation that is a refusal.
struct Refusal {
  const char *function;
  int result;
  const char *file;
  const char *emitter;
  const char *text;
};

void PrintTo(const Refusal &row, std::ostream *out) {
  *out << row.function;
}

class BeforeInitialisation : public fake::LibraryTest,
                             public testing::WithParamInterface<Refusal> {};

TEST_P(BeforeInitialisation, ACallIsAnswered) {
  int unknown = 5;
  (void)norix_deinitialize();
  forgetCalls();

  for (const ExportedCall &exported : exportedCalls()) {
    if (exported.function == GetParam().function) {
      EXPECT_EQ(exported.call(&unknown), GetParam().result);
    }
  }

  EXPECT_THAT(logLines(), LinesAre({IsLine(GetParam().file, GetParam().emitter, GetParam().text)}));
}

constexpr const char *kNotInitialisedText = "Norix is not initialized";

INSTANTIATE_TEST_SUITE_P(
    OfTheNine, BeforeInitialisation,
    testing::Values(Refusal{"norix_deinitialize", NORIX_ERROR_NONE, "NorixImpl.cpp", "deinitialize",
                            "NorixImpl is not initialized. Please initialize at first."},
                    Refusal{"norix_set_app_state_request_cb", NORIX_ERROR_OPERATION_FAILED,
                            "NorixImpl.cpp", "setAppStateRequestCb", kNotInitialisedText},
                    Refusal{"norix_unset_app_state_request_cb", NORIX_ERROR_OPERATION_FAILED,
                            "NorixImpl.cpp", "unsetAppStateRequestCb", kNotInitialisedText},
                    Refusal{"norix_complete_app_state_request", NORIX_ERROR_OPERATION_FAILED,
                            "NorixImpl.cpp", "completeAppStateRequest", kNotInitialisedText},
                    Refusal{"norix_set_action_execution_cb", NORIX_ERROR_OPERATION_FAILED,
                            "NorixImpl.cpp", "setActionExcutionCb", kNotInitialisedText},
                    Refusal{"norix_unset_action_execution_cb", NORIX_ERROR_OPERATION_FAILED,
                            "NorixImpl.cpp", "unsetExecuteActionCb", kNotInitialisedText},
                    Refusal{"norix_complete_action_execution", NORIX_ERROR_OPERATION_FAILED,
                            "NorixImpl.cpp", "completeActionExecution", kNotInitialisedText}),
    [](const auto &tested) { return std::string(tested.param.function); });

class TheCInterface : public fake::LibraryTest {};

TEST_F(TheCInterface, RefusesANullActionIdSilentlyBeforeInitialisation) {
  (void)norix_deinitialize();
  forgetCalls();

  EXPECT_EQ(norix_set_action_execution_cb(nullptr, noAction, nullptr),
            NORIX_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(norix_unset_action_execution_cb(nullptr), NORIX_ERROR_INVALID_PARAMETER);

  EXPECT_THAT(log(), IsEmpty());
}

TEST_F(TheCInterface, RefusesANullActionIdSilentlyAfterInitialisation) {
  app.isReady();

  EXPECT_EQ(norix_set_action_execution_cb(nullptr, noAction, nullptr),
            NORIX_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(norix_unset_action_execution_cb(nullptr), NORIX_ERROR_INVALID_PARAMETER);

  EXPECT_THAT(log(), IsEmpty());
}

TEST_F(TheCInterface, ReadsNoHandleBeforeInitialisation) {
  void *const nowhere = reinterpret_cast<void *>(1);

  EXPECT_EQ(norix_complete_app_state_request(nowhere, "x"), NORIX_ERROR_OPERATION_FAILED);
  EXPECT_EQ(norix_complete_action_execution(nowhere, "x"), NORIX_ERROR_OPERATION_FAILED);
  EXPECT_EQ(norix_complete_app_state_request(nullptr, nullptr), NORIX_ERROR_OPERATION_FAILED);
  EXPECT_EQ(norix_complete_action_execution(nullptr, nullptr), NORIX_ERROR_OPERATION_FAILED);
}

TEST_F(TheCInterface, ForwardsANullCallback) {
  app.isReady();

  EXPECT_EQ(norix_set_app_state_request_cb(nullptr, nullptr), NORIX_ERROR_NONE);
  EXPECT_EQ(norix_set_action_execution_cb("play", nullptr, nullptr), NORIX_ERROR_NONE);

  EXPECT_THAT(
      log(),
      TextsAre({"App State Request Cb has been unset", "App State Request cb has been set",
                "App State Request cb has been set", "'play' Action Execution cb has been unset",
                "'play' Action Execution cb has been set"}));
}

TEST_F(TheCInterface, LetsTheExceptionOfAMissingAppIdThrough) {
  platform().application.id.reset();

  EXPECT_THROW((void)norix_initialize(), std::logic_error);
}

TEST_F(TheCInterface, LetsAFailedCopyThrough) {
  app.isReady();
  // Too long for the string's own buffer: the first thing that allocates is the copy.
  fake::Heap::instance().failNew(1);

  EXPECT_THROW(
      (void)norix_set_action_execution_cb("an action id of some length", noAction, nullptr),
      std::bad_alloc);

  EXPECT_THAT(log(), IsEmpty());
}

TEST_F(TheCInterface, TakesTheUserDataOfAnApplicationWithoutAny) {
  app.isReady();

  EXPECT_EQ(norix_set_app_state_request_cb(noState, nullptr), NORIX_ERROR_NONE);
  EXPECT_EQ(norix_set_action_execution_cb("", noAction, nullptr), NORIX_ERROR_NONE);
}

// Answers are never refused for their text.
class ANullAnswer : public fake::ReadyLibraryTest {};

TEST_F(ANullAnswer, IsSentAsTheWordNullForAState) {
  app.registersForState();
  assistant.asksForState(1);

  EXPECT_EQ(app.answersState(nullptr), NORIX_ERROR_NONE);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::stateAnswer("null", 1)}));
}

TEST_F(ANullAnswer, IsSentAsTheWordNullForAnAction) {
  app.registersFor("play");
  assistant.asksForAction("play", 1);

  EXPECT_EQ(app.answersAction(nullptr), NORIX_ERROR_NONE);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("null", 1)}));
}

} // namespace
