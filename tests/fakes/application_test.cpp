// SPDX-License-Identifier: Apache-2.0
#include "fakes/LibraryTest.h"

#include <app_common.h>
#include <app_manager.h>

#include <cstdlib>

namespace {

using fake::library;
using fake::platform;
using fake::TextsAre;

class AFakeApplication : public fake::LibraryTest {
protected:
  static bool noteEntry(const char *key, const char *value, void *entries) {
    auto *noted = static_cast<std::vector<std::string> *>(entries);
    noted->push_back(std::string(key) + "=" + value);
    return noted->size() < 2;
  }
};

TEST_F(AFakeApplication, HasTheIdThatATestGivesIt) {
  char *id = nullptr;
  platform().application.id = "org.example.other";

  EXPECT_EQ(library([&id] { return app_get_id(&id); }), APP_ERROR_NONE);

  EXPECT_STREQ(id, "org.example.other");
  library([id] { std::free(id); });
}

TEST_F(AFakeApplication, LeavesTheOutputUntouchedWithoutAnId) {
  char untouched = 0;
  char *id = &untouched;
  platform().application.id.reset();

  EXPECT_EQ(app_get_id(&id), APP_ERROR_INVALID_CONTEXT);

  EXPECT_EQ(id, &untouched);
}

TEST_F(AFakeApplication, DeliversItsIdAlsoWithAnotherResult) {
  char *id = nullptr;
  platform().application.idResult = -12;

  EXPECT_EQ(app_get_id(&id), -12);

  EXPECT_STREQ(id, fake::kAppId);
  std::free(id);
}

TEST_F(AFakeApplication, ShowsItsMetadataUntilTheIteratorHasEnough) {
  app_info_h info = nullptr;
  std::vector<std::string> entries;
  platform().application.metadata = {{"a", "1"}, {"b", "2"}, {"c", "3"}};

  EXPECT_EQ(app_info_create("any", &info), APP_MANAGER_ERROR_NONE);
  EXPECT_EQ(app_info_foreach_metadata(info, noteEntry, &entries), APP_MANAGER_ERROR_NONE);
  EXPECT_EQ(app_info_destroy(info), APP_MANAGER_ERROR_NONE);

  EXPECT_THAT(entries, TextsAre({"a=1", "b=2"}));
}

TEST_F(AFakeApplication, IsMisusedWithAnInfoThatWasDestroyed) {
  app_info_h info = nullptr;
  app_info_create("any", &info);
  app_info_destroy(info);

  EXPECT_EQ(app_info_foreach_metadata(info, noteEntry, nullptr),
            APP_MANAGER_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(app_info_destroy(info), APP_MANAGER_ERROR_INVALID_PARAMETER);

  EXPECT_THAT(platform().misuses,
              TextsAre({"app_info_foreach_metadata with an app info not alive",
                        "app_info_destroy with an app info that is not alive"}));
  platform().misuses.clear();
}

} // namespace
