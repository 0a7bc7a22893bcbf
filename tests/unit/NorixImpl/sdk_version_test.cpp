// SPDX-License-Identifier: Apache-2.0
//
// What the core object asks the platform about the application when it is made.
#include "fakes/LibraryTest.h"
#include "fakes/LogMatchers.h"

#include <app_common.h>
#include <app_manager.h>
#include <norix.h>

#include <ostream>
#include <stdexcept>

namespace {

using fake::IsLine;
using fake::kAppId;
using fake::LinesAre;
using fake::platform;
using fake::TextsAre;
using testing::IsEmpty;
using testing::StrEq;
using testing::ThrowsMessage;

constexpr const char *kKey = NORIX_SDK_VERSION_METADATA_KEY;

class TheSdkVersion : public fake::LibraryTest {};

TEST_F(TheSdkVersion, IsAskedForOnceWhenTheCoreObjectIsMade) {
  (void)norix_deinitialize();

  EXPECT_THAT(
      calls({"app_get_id", "app_info_create", "app_info_foreach_metadata", "app_info_destroy"}),
      TextsAre({"app_get_id()", "app_info_create(org.example.music)",
                "app_info_foreach_metadata(app info 1)", "app_info_destroy(app info 1)"}));
  EXPECT_THAT(
      logLines(),
      LinesAre(
          {IsLine("NorixImpl.cpp", "getAppSdkVersion", "AppId = %s", "AppId = org.example.music"),
           IsLine("NorixImpl.cpp", "_norix_metadata_cb", "metadata_key[%s] metadata_value[%s]",
                  std::string("metadata_key[") + kKey + "] metadata_value[1.0-beta]"),
           IsLine("NorixImpl.cpp", "getAppSdkVersion", "AppSdkVersion %s",
                  "AppSdkVersion 1.0-beta"),
           testing::_}));

  forgetCalls();
  app.initialises();
  EXPECT_THAT(calls({"app_get_id", "app_info_create"}), IsEmpty());
}

TEST_F(TheSdkVersion, IsKeptAfterItsEntryWasLogged) {
  (void)norix_deinitialize();

  EXPECT_THAT(
      calls({"dlog_print", "strdup"}),
      TextsAre({"dlog_print(AppId = org.example.music)",
                std::string("dlog_print(metadata_key[") + kKey + "] metadata_value[1.0-beta])",
                "strdup(1.0-beta)", "dlog_print(AppSdkVersion 1.0-beta)",
                "dlog_print(NorixImpl is not initialized. Please initialize at first.)"}));
}

TEST_F(TheSdkVersion, CannotBeCuredWithinTheProcess) {
  platform().application.metadata = {{kKey, "1.0-alpha"}};
  EXPECT_EQ(app.initialises(), NORIX_ERROR_NOT_SUPPORTED);

  platform().application.metadata = {{kKey, "1.0-beta"}};

  EXPECT_EQ(app.initialises(), NORIX_ERROR_NOT_SUPPORTED);
  EXPECT_THAT(logLines().back(),
              IsLine("NorixImpl.cpp", "initialize",
                     "App SDK Norix Init Failed. App SDK version doesn't support TIDL."));
  EXPECT_EQ(platform().ports.stubsCreated(), 0);
}

TEST_F(TheSdkVersion, IsLoggedAsNullWhenThereIsNone) {
  platform().application.metadata.clear();

  EXPECT_EQ(app.initialises(), NORIX_ERROR_NOT_SUPPORTED);

  EXPECT_THAT(log(),
              TextsAre({"AppId = org.example.music", "AppSdkVersion (null)",
                        "App SDK Norix Init Failed. App SDK version doesn't support TIDL."}));
}

TEST_F(TheSdkVersion, CountsAsSupportedWhenTheAppInfoCannotBeMade) {
  platform().faults.fail("app_info_create", 1, APP_MANAGER_ERROR_NO_SUCH_APP);
  (void)norix_deinitialize();

  EXPECT_THAT(logLines()[1],
              IsLine("NorixImpl.cpp", "getAppSdkVersion", "app_info_create failed ERROR[%d]",
                     "app_info_create failed ERROR[-17891327]"));
  EXPECT_EQ(platform().journal.count("app_info_foreach_metadata"), 0);
  EXPECT_EQ(platform().journal.count("app_info_destroy"), 0);
  EXPECT_EQ(app.initialises(), NORIX_ERROR_NONE);
}

TEST_F(TheSdkVersion, CountsAsSupportedWhenTheMetadataCannotBeRead) {
  platform().application.metadata.clear();
  platform().faults.fail("app_info_foreach_metadata", 1, APP_MANAGER_ERROR_IO_ERROR);
  (void)norix_deinitialize();

  EXPECT_THAT(logLines()[1], IsLine("NorixImpl.cpp", "getAppSdkVersion",
                                    "app_info_foreach_metadata failed ERROR[%d]",
                                    "app_info_foreach_metadata failed ERROR[-5]"));
  EXPECT_EQ(platform().journal.count("app_info_destroy"), 1);
  EXPECT_EQ(app.initialises(), NORIX_ERROR_NONE);
}

// The fixture finds a version that is left.
TEST_F(TheSdkVersion, IsReleasedAndDoesNotCountWhenTheMetadataBreaksOffBehindIt) {
  platform().application.metadata = {{kKey, "1.0-alpha"}};
  platform().faults.fail("app_info_foreach_metadata", 1, APP_MANAGER_ERROR_IO_ERROR);

  EXPECT_EQ(app.initialises(), NORIX_ERROR_NONE);
}

TEST_F(TheSdkVersion, IsLookedForInEveryEntry) {
  platform().application.metadata = {{"first", "1"}, {kKey, "1.0-beta"}, {"last", "2"}};

  EXPECT_EQ(app.initialises(), NORIX_ERROR_NONE);

  EXPECT_EQ(log()[1], "metadata_key[first] metadata_value[1]");
  EXPECT_EQ(log()[3], "metadata_key[last] metadata_value[2]");
}

TEST_F(TheSdkVersion, IsTheLastOfTwoEntries) {
  platform().application.metadata = {{kKey, "1.0-alpha"}, {kKey, "1.0-beta"}};

  EXPECT_EQ(app.initialises(), NORIX_ERROR_NONE);

  expectLeft(fake::DeliberateLeak::ReplacedSdkVersion);
}

TEST_F(TheSdkVersion, IsTheLastOfTwoEntriesAlsoWhenThatIsNotSupported) {
  platform().application.metadata = {{kKey, "1.0-beta"}, {kKey, "1.0-alpha"}};

  EXPECT_EQ(app.initialises(), NORIX_ERROR_NOT_SUPPORTED);

  expectLeft(fake::DeliberateLeak::ReplacedSdkVersion);
}

TEST_F(TheSdkVersion, IsAskedForWhateverAppGetIdReturns) {
  platform().application.idResult = APP_ERROR_OUT_OF_MEMORY;

  EXPECT_EQ(app.initialises(), NORIX_ERROR_NONE);
}

// As a process that was not launched as an application.
class WithoutAnAppId : public fake::LibraryTest {
protected:
  void SetUp() override { platform().application.id.reset(); }
};

TEST_F(WithoutAnAppId, TheCoreObjectCannotBeMade) {
  EXPECT_THAT([] { (void)norix_initialize(); },
              ThrowsMessage<std::logic_error>(StrEq("basic_string::_M_construct null not valid")));

  EXPECT_THAT(calls({"app_info_create", "rpc_port_stub_create"}), IsEmpty());
}

TEST_F(WithoutAnAppId, EveryFirstCallThrowsAgain) {
  EXPECT_THROW((void)norix_deinitialize(), std::logic_error);
  EXPECT_THROW((void)norix_unset_app_state_request_cb(), std::logic_error);
}

TEST_F(WithoutAnAppId, TheNextCallSucceedsOnceThereIsOne) {
  EXPECT_THROW((void)norix_initialize(), std::logic_error);

  platform().application.id = kAppId;

  EXPECT_EQ(norix_initialize(), NORIX_ERROR_NONE);
}

struct Manifest {
  const char *name;
  std::vector<std::pair<std::string, std::string>> metadata;
  int result;
};

void PrintTo(const Manifest &row, std::ostream *out) {
  *out << row.name;
}

class AManifest : public fake::LibraryTest, public testing::WithParamInterface<Manifest> {};

TEST_P(AManifest, DecidesWhetherTheLibraryInitialises) {
  platform().application.metadata = GetParam().metadata;

  EXPECT_EQ(app.initialises(), GetParam().result);
  EXPECT_EQ(app.initialises(), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    , AManifest,
    testing::Values(
        Manifest{"WithoutMetadata", {}, NORIX_ERROR_NOT_SUPPORTED},
        Manifest{"WithAnotherEntryOnly", {{"key", "1.0-beta"}}, NORIX_ERROR_NOT_SUPPORTED},
        Manifest{"WithABetaVersion", {{kKey, "1.0-beta"}}, NORIX_ERROR_NONE},
        Manifest{"WithAReleasedVersion", {{kKey, "1.0"}}, NORIX_ERROR_NONE},
        Manifest{"WithAnEmptyVersion", {{kKey, ""}}, NORIX_ERROR_NONE},
        Manifest{"WithAnAlphaVersion", {{kKey, "1.0-alpha"}}, NORIX_ERROR_NOT_SUPPORTED},
        Manifest{"WithALaterAlphaVersion", {{kKey, "1.0-alpha2"}}, NORIX_ERROR_NOT_SUPPORTED},
        Manifest{"WithAnAlphaVersionInside", {{kKey, "v11.0-alpha!"}}, NORIX_ERROR_NOT_SUPPORTED},
        Manifest{"WithAnotherAlphaVersion", {{kKey, "1.1-alpha"}}, NORIX_ERROR_NONE},
        Manifest{"WithALetterCaseOfItsOwn", {{kKey, "1.0-Alpha"}}, NORIX_ERROR_NONE},
        // The key counts in full: no other scheme, host or path, nothing behind it.
        Manifest{"WithAnotherScheme",
                 {{"https://valtren.com/tizen/metadata/norix/sdk/version", "1.0"}},
                 NORIX_ERROR_NOT_SUPPORTED},
        Manifest{"WithAnotherHost",
                 {{"http://www.valtren.com/tizen/metadata/norix/sdk/version", "1.0"}},
                 NORIX_ERROR_NOT_SUPPORTED},
        Manifest{"WithThePathAlone",
                 {{"/tizen/metadata/norix/sdk/version", "1.0"}},
                 NORIX_ERROR_NOT_SUPPORTED},
        Manifest{"WithALongerKey", {{std::string(kKey) + "s", "1.0"}}, NORIX_ERROR_NOT_SUPPORTED}),
    [](const auto &tested) { return std::string(tested.param.name); });

} // namespace
