// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_INTEGRATION_INTEGRATIONTEST_H
#define NORIX_TESTS_INTEGRATION_INTEGRATIONTEST_H

#include "assistant/client/MainLoop.h"
#include "assistant/client/Session.h"
#include "support/Process.h"
#include "support/TemporaryRuntime.h"

#include <gtest/gtest.h>

namespace integration {

// Test cases name the assistant's side throughout.
using namespace norix::assistant;

using support::kBound;
using support::Process;
using support::TemporaryRuntime;

// A desktop of its own, and the assistant's side in this process.
class IntegrationTest : public ::testing::Test {
protected:
  // The order counts: the main loop already looks for the runtime folder.
  TemporaryRuntime runtime;
  MainLoop loop;
};

} // namespace integration

#endif
