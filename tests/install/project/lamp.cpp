// SPDX-License-Identifier: Apache-2.0
#include <norix.hpp>
#include <service_app.h>

#include <optional>

namespace {

bool onCreate(void *userData) {
  auto &assistant = *static_cast<std::optional<norix::Assistant> *>(userData);
  assistant.emplace();
  assistant->onState([] { return "lit, in C++"; });
  return true;
}

void onTerminate(void *userData) {
  static_cast<std::optional<norix::Assistant> *>(userData)->reset();
}

} // namespace

int main(int argc, char **argv) {
  std::optional<norix::Assistant> assistant;
  service_app_lifecycle_callback_s callbacks = {};
  callbacks.create = onCreate;
  callbacks.terminate = onTerminate;
  return service_app_main(argc, argv, &callbacks, &assistant);
}
