// SPDX-License-Identifier: Apache-2.0
//
// What a request that waits for its callback keeps of its entries.
#include "fakes/LibraryTest.h"
#include "fakes/LogMatchers.h"

namespace {

using fake::Contents;
using fake::EntriesAre;
using fake::IsLine;
using fake::library;
using fake::LinesAre;
using fake::platform;
using fake::TextsAre;
using testing::Contains;

class AParkedCopy : public fake::ReadyLibraryTest {
protected:
  // The copy of a request with these entries behind its action id.
  Contents copyOf(const Contents &entries) {
    Contents request = {fake::text("actionId", "play")};
    request.insert(request.end(), entries.begin(), entries.end());
    assistant.sends(request);
    app.registersFor("play");
    platform().clock.advance(0.02);
    expectLeft(fake::DeliberateLeak::ParkedBundle);
    return app.actionRequests.back().params;
  }
};

TEST_F(AParkedCopy, HasTheTextsInTheirOrder) {
  EXPECT_THAT(
      copyOf({fake::text("z", "1"), fake::text("a", "")}),
      EntriesAre({fake::text("actionId", "play"), fake::text("z", "1"), fake::text("a", "")}));
}

TEST_F(AParkedCopy, HasEightBytesOfEveryByteValue) {
  EXPECT_THAT(copyOf({fake::id("eight", 42), fake::bytes("four", std::string("\x05\0\0\0", 4)),
                      fake::bytes("ten", std::string("\x06\0\0\0\0\0\0\0\x07\x08", 10))}),
              EntriesAre({fake::text("actionId", "play"), fake::id("eight", 42),
                          fake::id("four", 5), fake::id("ten", 6)}));
}

TEST_F(AParkedCopy, HasNoArrays) {
  EXPECT_THAT(copyOf({fake::texts("texts", {"a", "b"}), fake::text("between", "x"),
                      fake::byteArrays("bytes", {"a"})}),
              EntriesAre({fake::text("actionId", "play"), fake::text("between", "x")}));

  EXPECT_THAT(logLines(),
              Contains(IsLine("ActionRequestImpl.cpp", "_bundleDataCb", "key value is array type"))
                  .Times(2));
}

TEST_F(AParkedCopy, HasLongTexts) {
  const std::string longText(1 << 20, 'x');

  EXPECT_THAT(copyOf({fake::text("actionParams", longText)}),
              EntriesAre({fake::text("actionId", "play"), fake::text("actionParams", longText)}));
}

TEST_F(AParkedCopy, IsReadEntryByEntry) {
  copyOf({fake::id("requestId", 42), fake::texts("texts", {"a"})});

  EXPECT_THAT(
      calls({"bundle_foreach", "bundle_keyval_type_is_array", "bundle_keyval_get_type",
             "bundle_keyval_get_basic_val", "bundle_add_byte"}),
      TextsAre({"bundle_foreach(bundle 2)", "bundle_keyval_type_is_array(actionId)",
                "bundle_keyval_get_type(actionId)", "bundle_keyval_get_basic_val(actionId)",
                "bundle_keyval_type_is_array(requestId)", "bundle_keyval_get_type(requestId)",
                "bundle_keyval_get_basic_val(requestId)", "bundle_add_byte(bundle 3, requestId, 8)",
                "bundle_keyval_type_is_array(texts)"}));
}

TEST_F(AParkedCopy, NeedsATarget) {
  copyOf({});
  bundle *request = platform().bundles.create({fake::text("key", "value")});
  forgetCalls();

  library([request] { bundle_foreach(request, platform().bundles.lastIterator, nullptr); });

  EXPECT_THAT(logLines(),
              LinesAre({IsLine("ActionRequestImpl.cpp", "_bundleDataCb", "Bundle data is null")}));
  EXPECT_THAT(calls({"bundle_keyval_type_is_array", "bundle_keyval_get_type",
                     "bundle_keyval_get_basic_val", "bundle_add_str"}),
              testing::IsEmpty());
  bundle_free(request);
}

// The type that the iterator is told is not looked at.
TEST_F(AParkedCopy, TakesTheTypeFromTheEntryItself) {
  copyOf({});
  bundle *target = platform().bundles.create({});
  bundle *request = platform().bundles.create({fake::text("key", "value")});
  bundle_keyval_s *const entry = request->find("key");

  library([&] { platform().bundles.lastIterator("key", BUNDLE_TYPE_BYTE_ARRAY, entry, target); });

  EXPECT_THAT(fake::contentsOf(target), EntriesAre({fake::text("key", "value")}));
  bundle_free(request);
  bundle_free(target);
}

} // namespace
