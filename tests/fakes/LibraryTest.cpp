// SPDX-License-Identifier: Apache-2.0
#include "fakes/LibraryTest.h"

#include "fakes/Singletons.h"

#include "NorixImpl/NorixImpl.h"

#include <norix.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace fake {

void reportWhatIsLeft() {
  destroySingletons();
  for (const std::string &misuse : platform().misuses) {
    ADD_FAILURE() << "misuse of the platform: " << misuse;
  }
  for (const std::string &complaint : platform().leaks.complaints()) {
    ADD_FAILURE() << complaint;
  }
}

void startAnew() {
  destroySingletons();
  resetPlatform();
  platform().application.id = kAppId;
  platform().application.metadata = {{NORIX_SDK_VERSION_METADATA_KEY, "1.0-beta"}};
  // The machine's own allow list must not decide a test.
  NORIX_PROXY_ALLOW_APPID_LIST_PATH = "/nonexistent/";
}

NothingLeft::NothingLeft() : _allowListPath(NORIX_PROXY_ALLOW_APPID_LIST_PATH) {
  startAnew();
}

NothingLeft::~NothingLeft() {
  reportWhatIsLeft();
  NORIX_PROXY_ALLOW_APPID_LIST_PATH = _allowListPath;
}

void LibraryTest::TearDown() {
  if (norix::NorixImpl::_instance != nullptr) {
    (void)norix_deinitialize();
  }
  if (!_allowListFolder.empty()) {
    std::filesystem::remove_all(_allowListFolder);
  }
}

void LibraryTest::allowListIs(const std::string &content) {
  if (_allowListFolder.empty()) {
    std::string folder = (std::filesystem::temp_directory_path() / "norix-test-XXXXXX").string();
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    _allowListFolder = folder + "/";
    NORIX_PROXY_ALLOW_APPID_LIST_PATH = _allowListFolder.c_str();
  }
  std::ofstream(_allowListFolder + NORIX_PROXY_ALLOW_APPID_LIST_FILE_NAME, std::ios::binary)
      << content;
}

void LibraryTest::expectLeft(DeliberateLeak leak, std::size_t times) {
  platform().leaks.expectLeft(leak, times);
}

void LibraryTest::inside(const std::string &call, const std::function<void()> &action) {
  const std::string function = call.substr(0, call.find('('));
  platform().during[function] = [call, action] {
    if (platform().journal.calls().back().text() == call) {
      action();
    } else {
      inside(call, action);
    }
  };
}

void LibraryTest::forgetCalls() {
  platform().journal.clear();
  platform().log.clear();
}

void ReadyLibraryTest::SetUp() {
  ASSERT_EQ(app.initialises(), NORIX_ERROR_NONE);
  assistant.isReady();
}

} // namespace fake
