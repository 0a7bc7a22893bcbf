// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_BENCHMARKS_APPLICATION_CROWD_H
#define NORIX_BENCHMARKS_APPLICATION_CROWD_H

#include "harness/Samples.h"
#include "support/Process.h"

#include <string>

namespace benchmarks {

/**
 * @brief Many assistants that ask one application at the same time, in a process of their own.
 * @details Each has an app id of its own: the application keeps one delegate per id.
 */
class CrowdProcess {
public:
  /** @brief Starts this program again, which has to hand "--crowd" over to runCrowd(). */
  CrowdProcess(const std::string &appId, int connections);

  /** @brief Makes so many exchanges in all, and adds their mean time once. */
  void exchange(int count, Samples &samples);

private:
  support::Process _process;
};

/** @brief What the started process does: a line with a count in, one with nanoseconds out. */
int runCrowd(const std::string &appId, int connections);

} // namespace benchmarks

#endif
