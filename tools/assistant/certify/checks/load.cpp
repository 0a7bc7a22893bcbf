// SPDX-License-Identifier: Apache-2.0
//
// Many requests, and what they leave behind.
#include "assistant/certify/Load.h"

#include "assistant/certify/Examination.h"
#include "assistant/certify/Verdicts.h"
#include "assistant/certify/checks/checks.h"

namespace norix::assistant::certify {
namespace {

// 25 bytes a request. What grows for another reason than the requests grows once.
constexpr long kKibibytesInHalf = 100;

const Load &completeLoad(Examination &examination) {
  const Load &load = examination.load();
  if (!load.isComplete()) {
    throw NotPossible("too few requests were answered: see the check 'load-answered'");
  }
  return load;
}

bool growsInBothHalves(const Load &load, long Usage::*what, long allowed) {
  return load.usage[1].*what - load.usage[0].*what > allowed
         && load.usage[2].*what - load.usage[1].*what > allowed;
}

std::string grown(const Load &load, long Usage::*what, const std::string &unit) {
  return "from " + std::to_string(load.usage[0].*what) + " over "
         + std::to_string(load.usage[1].*what) + " to " + std::to_string(load.usage[2].*what) + " "
         + unit + " in " + std::to_string(Load::kRequests - Load::kWarmUp) + " requests";
}

} // namespace

void checkLoadAnswered(Examination &examination, Verdicts &verdicts) {
  const Load &load = examination.load();
  if (load.isComplete()) {
    verdicts.pass();
  } else {
    verdicts.fail("after " + std::to_string(load.answered) + " requests, the next one "
                  + load.failure.text);
  }
}

void checkLoadMemory(Examination &examination, Verdicts &verdicts) {
  const Load &load = completeLoad(examination);
  if (load.hasAddressSanitizer) {
    throw NotPossible("the application is built with AddressSanitizer, which keeps freed memory");
  }
  if (growsInBothHalves(load, &Usage::memory, kKibibytesInHalf)) {
    verdicts.fail("the application's memory grows, " + grown(load, &Usage::memory, "KiB"));
  } else {
    verdicts.pass();
  }
}

void checkLoadDescriptors(Examination &examination, Verdicts &verdicts) {
  const Load &load = completeLoad(examination);
  if (growsInBothHalves(load, &Usage::descriptors, 0)) {
    verdicts.fail("the application's open files grow, "
                  + grown(load, &Usage::descriptors, "descriptors"));
  } else {
    verdicts.pass();
  }
}

} // namespace norix::assistant::certify
