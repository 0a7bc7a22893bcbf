// SPDX-License-Identifier: Apache-2.0
//
// The SDK version that an application's manifest declares.
#include "integration/harness/IntegrationTest.h"
#include "integration/harness/Named.h"
#include "integration/harness/TestApplication.h"

#include <norix.h>

namespace integration {
namespace {

using Version = Named<std::optional<std::string>>;

class ASupportedSdkVersion : public IntegrationTest, public testing::WithParamInterface<Version> {};
class AnUnsupportedSdkVersion : public IntegrationTest,
                                public testing::WithParamInterface<Version> {};
class AMissingManifest : public IntegrationTest {};

INSTANTIATE_TEST_SUITE_P(, ASupportedSdkVersion,
                         testing::Values(Version{"Beta", "1.0-beta"}, Version{"Release", "1.0"},
                                         Version{"Empty", ""}, Version{"OtherAlpha", "2.0-alpha"}));

INSTANTIATE_TEST_SUITE_P(, AnUnsupportedSdkVersion,
                         testing::Values(Version{"Undeclared", std::nullopt},
                                         Version{"Alpha", "1.0-alpha"},
                                         Version{"SecondAlpha", "1.0-alpha2"},
                                         Version{"AlphaInside", "v1.0-alpha.3"}));

TestApplication::Options declaring(const std::optional<std::string> &version) {
  TestApplication::Options options;
  options.sdkVersion = version;
  return options;
}

TEST_P(ASupportedSdkVersion, Initialises) {
  TestApplication application(runtime, declaring(GetParam().value));

  EXPECT_EQ(application.initialize(), NORIX_ERROR_NONE);
}

TEST_P(AnUnsupportedSdkVersion, NeverInitialises) {
  TestApplication application(runtime, declaring(GetParam().value));

  EXPECT_EQ(application.initialize(), NORIX_ERROR_NOT_SUPPORTED);
  EXPECT_EQ(application.initialize(), NORIX_ERROR_NOT_SUPPORTED);
}

TEST_F(AMissingManifest, CountsAsSupported) {
  TestApplication application(runtime, {});
  runtime.uninstall(application.id());

  EXPECT_EQ(application.initialize(), NORIX_ERROR_NONE);
}

} // namespace
} // namespace integration
