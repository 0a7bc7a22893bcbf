// SPDX-License-Identifier: Apache-2.0
#include "assistant/client/MainLoop.h"
#include "assistant/client/Request.h"
#include "assistant/mcp/Lane.h"

#include <Ecore.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace norix::assistant;
using namespace norix::assistant::mcp;

namespace {

class ALane : public ::testing::Test {
protected:
  /// Submits an action; its outcome's text, or kind, goes to the outcomes.
  Lane::Ticket submit(const std::string &name) { return submitWork({name, ""}, name); }
  Lane::Ticket readState(const std::string &name) { return submitWork({kStateActionId, ""}, name); }

  /// Ends what runs.
  void end(const std::string &text = "done") {
    const Done done = std::move(running.back());
    running.pop_back();
    done({Outcome::Kind::Answered, text});
  }

  MainLoop loop;
  std::vector<std::string> begun;
  std::vector<Done> running;
  std::vector<std::string> outcomes;
  Lane lane{{3, 25}, [this](const Work &work, Done done) {
              begun.push_back(work.actionId);
              running.push_back(std::move(done));
            }};

  Lane::Ticket submitWork(const Work &work, const std::string &name, Lane *to = nullptr) {
    return (to != nullptr ? *to : lane).submit(work, [this, name](const Outcome &outcome) {
      outcomes.push_back(name + " " + word(outcome.kind));
    });
  }
};

using Texts = std::vector<std::string>;

TEST_F(ALane, BeginsTheNextOnlyWhenTheLastHasEnded) {
  submit("a");
  submit("b");
  EXPECT_EQ(begun, Texts({"a"}));

  end();
  EXPECT_EQ(begun, Texts({"a", "b"}));
  EXPECT_EQ(outcomes, Texts({"a answered"}));
}

TEST_F(ALane, RefusesMoreThanMayWait) {
  for (const char *name : {"a", "b", "c", "d", "e"}) {
    submit(name);
  }

  EXPECT_EQ(outcomes, Texts({"e not-executed"}));
}

TEST_F(ALane, NeverBeginsWhatWasCancelledWhileItWaited) {
  submit("a");
  const Lane::Ticket waiting = submit("b");
  submit("c");
  lane.cancel(waiting);
  end();

  EXPECT_EQ(begun, Texts({"a", "c"}));
}

TEST_F(ALane, StaysTakenByWhatWasCancelledAfterItBegan) {
  const Lane::Ticket first = submit("a");
  submit("b");
  lane.cancel(first);
  EXPECT_EQ(begun, Texts({"a"}));

  end();
  EXPECT_EQ(begun, Texts({"a", "b"}));
  EXPECT_TRUE(outcomes.empty());
}

TEST_F(ALane, SharesOneRequestAmongStateReadsThatWait) {
  submit("a");
  readState("x");
  readState("y");
  end();
  end();

  EXPECT_EQ(begun, Texts({"a", kStateActionId}));
  EXPECT_EQ(outcomes, Texts({"a answered", "x answered", "y answered"}));
}

TEST_F(ALane, DoesNotShareAStateReadThatHasBegun) {
  readState("x");
  readState("y");
  end();

  EXPECT_EQ(begun.size(), 2U);
  EXPECT_EQ(outcomes, Texts({"x answered"}));
}

TEST_F(ALane, KeepsASharedReadForItsOtherCallers) {
  submit("a");
  const Lane::Ticket gone = readState("x");
  readState("y");
  lane.cancel(gone);
  end();
  end();

  EXPECT_EQ(outcomes, Texts({"a answered", "y answered"}));
}

TEST_F(ALane, NeverSharesActions) {
  submit("a");
  submit("b");
  submit("b");
  end();
  end();
  end();

  EXPECT_EQ(begun, Texts({"a", "b", "b"}));
}

TEST_F(ALane, GivesUpWhatWaitsTooLong) {
  Lane impatient({3, 0.01}, [this](const Work &work, Done done) {
    begun.push_back(work.actionId);
    running.push_back(std::move(done));
  });
  submitWork({"a", ""}, "a", &impatient);
  submitWork({"b", ""}, "b", &impatient);
  while (outcomes.empty()) {
    ecore_main_loop_iterate();
  }
  end();

  EXPECT_EQ(outcomes, Texts({"b not-executed", "a answered"}));
  EXPECT_EQ(begun, Texts({"a"}));
}

TEST_F(ALane, BeginsNothingOnceClosed) {
  submit("a");
  submit("b");
  lane.close();
  end();

  EXPECT_EQ(begun, Texts({"a"}));
  EXPECT_FALSE(lane.busy());
}

TEST_F(ALane, TakesWorkFromInsideAnOutcome) {
  lane.submit({"a", ""}, [this](const Outcome &) { submit("b"); });
  end();

  EXPECT_EQ(begun, Texts({"a", "b"}));
}

} // namespace
