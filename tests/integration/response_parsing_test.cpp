// SPDX-License-Identifier: Apache-2.0
//
// The assistant's side reading response bundles, right and wrong.
#include "assistant/client/Response.h"

#include "assistant/client/Error.h"
#include "integration/harness/Failures.h"
#include "integration/harness/contents.h"

#include <gmock/gmock.h>

namespace integration {
namespace {

using norix::assistant::BundlePtr;
using norix::assistant::Failure;
using norix::assistant::Response;
using testing::HasSubstr;

// The entries whose keys end in "!" are added as bytes, the others as strings.
BundlePtr bundleOf(const Contents &contents) {
  BundlePtr made(bundle_create());
  for (const auto &[key, value] : contents) {
    if (key.back() == '!') {
      bundle_add_byte(made.get(), key.substr(0, key.size() - 1).c_str(), value.data(),
                      value.size());
    } else {
      bundle_add_str(made.get(), key.c_str(), value.c_str());
    }
  }
  return made;
}

const std::string kId = bytesOf(42);

TEST(AParsedResponse, OfASuccessHasTheTextAndTheRequestId) {
  const Response response(bundleOf(
      {{"status_code", "ACTION_EXECUTION_SUCCESS"}, {"result", "done"}, {"requestId!", kId}}));

  EXPECT_TRUE(response.succeeded());
  EXPECT_FALSE(response.isState());
  EXPECT_EQ(response.text(), "done");
  EXPECT_EQ(response.statusMessage(), "");
  EXPECT_EQ(response.requestId(), 42U);
}

TEST(AParsedResponse, OfAFailureHasTheStatusMessage) {
  const Response response(bundleOf({{"appContext", ""},
                                    {"status_code", "ACTION_EXECUTION_FAILURE"},
                                    {"status_msg", "no"},
                                    {"requestId!", kId}}));

  EXPECT_FALSE(response.succeeded());
  EXPECT_TRUE(response.isState());
  EXPECT_EQ(response.statusMessage(), "no");
}

TEST(AParsedResponse, MayHaveItsKeysInAnyOrderAndFurtherOnes) {
  const Response response(bundleOf({{"requestId!", kId},
                                    {"later", "addition"},
                                    {"result", "done"},
                                    {"status_code", "ACTION_EXECUTION_SUCCESS"}}));

  EXPECT_EQ(response.text(), "done");
}

TEST(AParsedResponse, NeedsABundle) {
  EXPECT_EQ(failureOf([] { Response(nullptr); }), Failure::Malformed);
}

struct Flaw {
  const char *name;
  Contents contents;
  const char *message;
};

std::ostream &operator<<(std::ostream &out, const Flaw &flaw) {
  return out << flaw.name;
}

class AMalformedResponse : public testing::TestWithParam<Flaw> {};

const std::pair<std::string, std::string> kSuccess{"status_code", "ACTION_EXECUTION_SUCCESS"};
const std::pair<std::string, std::string> kFailure{"status_code", "ACTION_EXECUTION_FAILURE"};
const std::pair<std::string, std::string> kDone{"result", "done"};
const std::pair<std::string, std::string> kRequestId{"requestId!", kId};

INSTANTIATE_TEST_SUITE_P(
    , AMalformedResponse,
    testing::Values(
        Flaw{"Empty", {}, "no key 'status_code'"},
        Flaw{"WithoutStatus", {kDone, kRequestId}, "no key 'status_code'"},
        Flaw{"WithAnUnknownStatus",
             {{"status_code", "MAYBE"}, kDone, kRequestId},
             "unknown 'status_code' 'MAYBE'"},
        Flaw{"WithBytesForStatus",
             {{"status_code!", "bytes"}, kDone, kRequestId},
             "'status_code' is no string"},
        Flaw{"FailedWithoutMessage", {kFailure, kDone, kRequestId}, "no key 'status_msg'"},
        Flaw{"WithoutText", {kSuccess, kRequestId}, "neither 'result' nor 'appContext'"},
        Flaw{"WithTwoTexts",
             {kSuccess, kDone, {"appContext", "idle"}, kRequestId},
             "both 'result' and 'appContext'"},
        Flaw{"WithBytesForText",
             {kSuccess, {"result!", "bytes"}, kRequestId},
             "'result' is no string"},
        Flaw{"WithoutRequestId", {kSuccess, kDone}, "no key 'requestId'"},
        Flaw{"WithATextForRequestId",
             {kSuccess, kDone, {"requestId", "42"}},
             "'requestId' is no byte entry"},
        Flaw{"WithAShortRequestId",
             {kSuccess, kDone, {"requestId!", "1234567"}},
             "'requestId' has 7 bytes, not 8"},
        Flaw{"WithALongRequestId",
             {kSuccess, kDone, {"requestId!", "123456789"}},
             "'requestId' has 9 bytes, not 8"}));

TEST_P(AMalformedResponse, IsRefusedWithTheKeyThatIsWrong) {
  const auto parse = [] { Response(bundleOf(GetParam().contents)); };

  EXPECT_EQ(failureOf(parse), Failure::Malformed);
  EXPECT_THAT(messageOf(parse), HasSubstr(GetParam().message));
}

} // namespace
} // namespace integration
