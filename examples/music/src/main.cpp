// SPDX-License-Identifier: Apache-2.0
//
// Music: an application as one would write it, its state in a class that knows nothing of voices.
// What is particular about each action stands in VoiceControl.cpp.
#include "Player.h"
#include "VoiceControl.h"

#include <dlog.h>
#include <norix/json.hpp>
#include <optional>
#include <service_app.h>
#include <string_view>

namespace {

/** @brief The application: what lives from create to terminate. */
struct Music {
  Player player{};
  std::optional<norix::Assistant> assistant{};
};

// The main loop exists by now, which the library needs. After false the application ends without
// terminate.
bool create(void *userData) {
  auto &[player, assistant] = *static_cast<Music *>(userData);
  try {
    letDrive(assistant.emplace(), player);
  } catch (const norix::Error &error) {
    dlog_print(DLOG_ERROR, "MUSIC", "%s", error.what());
    assistant.reset();
  }
  return assistant.has_value();
}

// The main loop still exists here, which the library needs, and is gone in main().
void terminate(void *userData) {
  static_cast<Music *>(userData)->assistant.reset();
}

// "--allow-list FOLDER/": takes the list of who may send requests from another folder than the
// device's, to try it out. Other arguments are left alone: a launcher passes some of its own.
void readArguments(int argc, char **argv) {
  for (int i = 1; i + 1 < argc; ++i) {
    if (std::string_view(argv[i]) == "--allow-list") {
      NORIX_PROXY_ALLOW_APPID_LIST_PATH = argv[i + 1];
    }
  }
}

} // namespace

int main(int argc, char **argv) {
  Music music;
  const auto drive = [&music](norix::Assistant &assistant) { letDrive(assistant, music.player); };
  if (norix::printsDeclarations(argc, argv, drive)) { // For the build.
    return 0;
  }
  readArguments(argc, argv);
  service_app_lifecycle_callback_s callbacks = {};
  callbacks.create = create;
  callbacks.terminate = terminate;

  return service_app_main(argc, argv, &callbacks, &music);
}
