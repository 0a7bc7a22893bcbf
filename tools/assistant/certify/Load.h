// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CERTIFY_LOAD_H
#define NORIX_ASSISTANT_CERTIFY_LOAD_H

#include "assistant/certify/Application.h"
#include "assistant/certify/OrdinaryUse.h"

#include <array>
#include <string>
#include <vector>

namespace norix::assistant::certify {

/// What a process holds.
struct Usage {
  /// Memory of its own, in KiB.
  long memory = 0;
  long descriptors = 0;
};

/// What came of many requests.
struct Load {
  /// How many are sent, and how many at a time: of these the newest has to be answered.
  static constexpr int kRequests = 10000;
  static constexpr int kAtATime = 10;
  /// Up to here an application may fill what it keeps for good.
  static constexpr int kWarmUp = 2000;

  /// How many were sent before one that had to be answered was not.
  int answered = 0;
  /// What came of the next one.
  Reply failure;
  /// After the warm-up, half of the rest, and the rest.
  std::array<Usage, 3> usage = {};
  /// Whether the process keeps memory that it has freed, to find late uses of it.
  bool hasAddressSanitizer = false;

  bool isComplete() const { return answered == kRequests; }
};

/// Sends an application requests for its state and for these actions in turn. Actions that take
/// long come as often as half a second allows each.
Load putUnderLoad(Application &application, const std::vector<const ActionUse *> &actions);

} // namespace norix::assistant::certify

#endif
