// SPDX-License-Identifier: Apache-2.0
#include "assistant/client/Request.h"

#include <new>
#include <random>
#include <utility>

namespace norix::assistant {
namespace {

std::uint64_t randomStart() {
  std::random_device device;
  return std::uniform_int_distribution<std::uint64_t>()(device);
}

void check(int result) {
  if (result != BUNDLE_ERROR_NONE) {
    throw std::bad_alloc();
  }
}

} // namespace

BundlePtr Request::toBundle() const {
  BundlePtr made(bundle_create());
  if (!made) {
    throw std::bad_alloc();
  }

  check(bundle_add_str(made.get(), "actionId", actionId.c_str()));
  check(bundle_add_str(made.get(), "actionType", actionType.c_str()));
  check(bundle_add_str(made.get(), "actionParams", actionParams.c_str()));
  for (const auto &[key, text] : furtherKeys) {
    check(bundle_add_str(made.get(), key.c_str(), text.c_str()));
  }
  check(bundle_add_byte(made.get(), "requestId", &requestId, sizeof requestId));
  return made;
}

Request stateRequest() {
  return {kStateActionId, {}, {}, nextRequestId()};
}

Request actionRequest(std::string actionId, std::string actionParams) {
  return {std::move(actionId), {}, std::move(actionParams), nextRequestId()};
}

std::uint64_t nextRequestId() {
  static std::uint64_t next = randomStart();
  return next++;
}

} // namespace norix::assistant
