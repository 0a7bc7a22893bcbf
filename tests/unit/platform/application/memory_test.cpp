// SPDX-License-Identifier: Apache-2.0
//
// What the functions do without memory. The platform's libraries find this program's operator new
// and strdup before those of the system.
#include "support/AppFolder.h"

#include <app_common.h>
#include <app_manager.h>
#include <cstdlib>
#include <cstring>
#include <gmock/gmock.h>
#include <new>

namespace {

bool isMemoryExhausted = false;

/** @brief There is no memory as long as this lives. */
class NoMemory {
public:
  NoMemory() { isMemoryExhausted = true; }
  ~NoMemory() { isMemoryExhausted = false; }
  NoMemory(const NoMemory &) = delete;
  NoMemory &operator=(const NoMemory &) = delete;
};

} // namespace

#pragma GCC visibility push(default)
extern "C" char *strdup(const char *text) noexcept {
  if (isMemoryExhausted) {
    return nullptr;
  }
  const std::size_t size = std::strlen(text) + 1;
  void *copy = std::malloc(size);
  return static_cast<char *>(copy != nullptr ? std::memcpy(copy, text, size) : nullptr);
}

void *operator new(std::size_t size) {
  void *memory = isMemoryExhausted ? nullptr : std::malloc(size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}

void operator delete(void *memory) noexcept {
  std::free(memory);
}

void operator delete(void *memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}
#pragma GCC visibility pop

namespace {

/** @brief An installed application that is the running one, too. */
class WithoutMemory : public testing::Test {
protected:
  WithoutMemory() {
    _folder.write("org.example.music/tizen-manifest.xml", kMusicManifest);
    setenv("NORIX_DESKTOP_APPS", _folder.path().c_str(), 1);
    setenv("XDG_DATA_HOME", _folder.path().c_str(), 1);
    setenv("AUL_APPID", "org.example.music", 1);
  }

  const AppFolder _folder;
};

TEST_F(WithoutMemory, AnApplicationDoesNotKnowItself) {
  char *text = nullptr;
  const NoMemory noMemory;

  EXPECT_EQ(app_get_id(&text), APP_ERROR_OUT_OF_MEMORY);
  EXPECT_EQ(app_get_name(&text), APP_ERROR_OUT_OF_MEMORY);
  EXPECT_EQ(app_get_version(&text), APP_ERROR_OUT_OF_MEMORY);

  EXPECT_EQ(text, nullptr);
}

TEST_F(WithoutMemory, AnApplicationHasNoPaths) {
  const NoMemory noMemory;

  EXPECT_EQ(app_get_resource_path(), nullptr);
  EXPECT_EQ(get_last_result(), APP_ERROR_OUT_OF_MEMORY);
  set_last_result(APP_ERROR_NONE);
  EXPECT_EQ(app_get_data_path(), nullptr);
  EXPECT_EQ(get_last_result(), APP_ERROR_OUT_OF_MEMORY);
}

TEST_F(WithoutMemory, ThereIsNoAppInfo) {
  app_info_h info = nullptr;
  const NoMemory noMemory;

  EXPECT_EQ(app_info_create("org.example.music", &info), APP_MANAGER_ERROR_OUT_OF_MEMORY);
  EXPECT_EQ(info, nullptr);
}

TEST_F(WithoutMemory, AnAppInfoHandsNothingOut) {
  app_info_h info = nullptr;
  char *text = nullptr;
  ASSERT_EQ(app_info_create("org.example.music", &info), APP_MANAGER_ERROR_NONE);

  {
    const NoMemory noMemory;
    EXPECT_EQ(app_info_get_app_id(info, &text), APP_MANAGER_ERROR_OUT_OF_MEMORY);
    EXPECT_EQ(app_info_get_exec(info, &text), APP_MANAGER_ERROR_OUT_OF_MEMORY);
    EXPECT_EQ(app_info_get_label(info, &text), APP_MANAGER_ERROR_OUT_OF_MEMORY);
    EXPECT_EQ(app_info_get_package(info, &text), APP_MANAGER_ERROR_OUT_OF_MEMORY);
    EXPECT_EQ(app_info_get_type(info, &text), APP_MANAGER_ERROR_OUT_OF_MEMORY);
  }

  EXPECT_EQ(text, nullptr);
  app_info_destroy(info);
}

} // namespace
