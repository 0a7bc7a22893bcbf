// SPDX-License-Identifier: Apache-2.0
#include "soak/check.h"

#include "assistant/client/Session.h"

#include <iomanip>
#include <poll.h>

namespace soak {
namespace {

using norix::assistant::Error;
using norix::assistant::Failure;
using norix::assistant::Session;

constexpr double kPatience = 30.0;
constexpr int kPauseMilliseconds = 50;
constexpr int kMostPauses = 600;

void pause() {
  (void)poll(nullptr, 0, kPauseMilliseconds);
}

} // namespace

std::string describe(const Footprint &before, const Footprint &after) {
  constexpr double kKiBPerMiB = 1024.0;
  std::ostringstream text;
  text << "descriptors " << before.descriptors << " -> " << after.descriptors << ", memory "
       << std::fixed << std::setprecision(1) << std::showpos
       << static_cast<double>(after.memoryKiB - before.memoryKiB) / kKiBPerMiB << " MiB of "
       << std::noshowpos << static_cast<double>(after.memoryKiB) / kKiBPerMiB;
  return text.str();
}

support::Process::Environment applicationEnvironment(const std::string &appId,
                                                     const std::string &logs) {
  return {{"AUL_APPID", appId},
          {"GLIBC_TUNABLES", "glibc.malloc.mmap_threshold=16384"},
          {"DLOG_FILE", logs + "/" + appId + ".log"},
          {"DLOG_FILTER", "NORIX-APPSDK:S RPC_PORT_STUB:S *:W"}};
}

void awaitAnswer(const std::string &appId) {
  for (int pauses = 0;; ++pauses) {
    try {
      Session session(appId, kPatience);
      const auto answer = session.ask(norix::assistant::stateRequest(), kPatience);
      return require(answer.response.succeeded(), appId + " does not tell its state");
    } catch (const Error &error) {
      if (error.failure() != Failure::CannotConnect || pauses == kMostPauses) {
        throw;
      }
    }
    pause();
  }
}

Footprint awaitRest(pid_t process, std::chrono::milliseconds unchanged) {
  const auto wanted = unchanged.count() / kPauseMilliseconds;
  Footprint footprint = Footprint::of(process);
  for (int same = 0, pauses = 0; same < wanted && pauses < kMostPauses; ++pauses) {
    pause();
    const Footprint now = Footprint::of(process);
    same = now.descriptors == footprint.descriptors ? same + 1 : 0;
    footprint = now;
  }
  return footprint;
}

} // namespace soak
