// SPDX-License-Identifier: Apache-2.0
#include "fakes/Describe.h"

#include "fakes/Platform.h"

#include <array>
#include <cstdio>
#include <string_view>

namespace fake {

namespace {

constexpr size_t kLongestText = 200;

template <typename Object>
std::string numbered(const char *kind, const void *handle, const Object *object) {
  if (handle == nullptr) {
    return "null";
  }
  return object == nullptr ? std::string("stale ") + kind
                           : std::string(kind) + " " + std::to_string(object->number);
}

} // namespace

std::string describe(const char *text) {
  if (text == nullptr) {
    return "null";
  }
  const std::string_view whole(text);
  if (whole.size() <= kLongestText) {
    return std::string(whole);
  }
  return std::string(whole.substr(0, kLongestText)) + "… (" + std::to_string(whole.size())
         + " bytes)";
}

std::string describe(int number) {
  return std::to_string(number);
}
std::string describe(bool value) {
  return value ? "true" : "false";
}
std::string describe(size_t number) {
  return std::to_string(number);
}

std::string describe(double number) {
  std::array<char, 32> buffer{};
  (void)std::snprintf(buffer.data(), buffer.size(), "%g", number);
  return buffer.data();
}

std::string describe(bundle *handle) {
  return numbered("bundle", handle, platform().bundles.find(handle));
}

std::string describe(app_info_h handle) {
  return numbered("app info", handle, platform().application.find(handle));
}

std::string describe(Ecore_Timer *timer) {
  return numbered("timer", timer, platform().clock.find(timer));
}

std::string describe(StubHandle stub) {
  return numbered("stub", stub.handle, platform().ports.findStub(stub.handle));
}

std::string describe(ParcelHandle parcel) {
  return numbered("parcel", parcel.handle, platform().ports.findParcel(parcel.handle));
}

std::string describe(PortHandle port) {
  if (port.handle == nullptr) {
    return "null";
  }
  const FakePort *found = platform().ports.findPort(port.handle);
  if (found == nullptr) {
    return "stale port";
  }
  return (found->type == RPC_PORT_PORT_MAIN ? "main port of " : "callback port of ")
         + found->instance;
}

} // namespace fake
