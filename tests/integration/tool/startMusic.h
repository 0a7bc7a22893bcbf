// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_INTEGRATION_TOOL_STARTMUSIC_H
#define NORIX_TESTS_INTEGRATION_TOOL_STARTMUSIC_H

#include "integration/harness/AssistantCommand.h"
#include "integration/harness/examples.h"

#include <gtest/gtest.h>

#include <string>

namespace integration {

/// The example's own program, in its own folder, listening.
inline Process startMusic() {
  Process music({std::string(MUSIC_EXAMPLE) + "/bin/music"}, {{"AUL_APPID", kMusic}});
  EXPECT_EQ(runAssistant({"state", kMusic, "--wait", "20"}).status, 0);
  return music;
}

} // namespace integration

#endif
