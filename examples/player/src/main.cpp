// SPDX-License-Identifier: Apache-2.0
//
// Player: an application with a window, written with Elementary and norix.hpp. The window shows the
// player, the assistant drives it, and neither knows of the other.
#include "Player.h"
#include "VoiceControl.h"
#include "Window.h"

#include <app.h>
#include <dlog.h>

#include <optional>

namespace {

constexpr double kSecond = 1.0;

/** @brief What lives from create to terminate, when there are a main loop and a display. */
class Session {
public:
  explicit Session(Player &player)
      : _player(player), _window(ui_app_exit),
        _voice(player, [this](const std::string &request, const std::string &answer) {
          _window.showRequest(request, answer);
        }) {
    _voice.registerAll(_assistant);
    _player.onChanged([this] { _window.show(_player); });
    _window.show(_player);
    _clock = ecore_timer_add(kSecond, onSecond, this);
  }
  Session(const Session &) = delete;
  Session &operator=(const Session &) = delete;
  ~Session() {
    ecore_timer_del(_clock);
    _player.onChanged({});
  }

private:
  static Eina_Bool onSecond(void *self) {
    static_cast<Session *>(self)->_player.tick();
    return ECORE_CALLBACK_RENEW;
  }

  Player &_player;
  Window _window;
  VoiceControl _voice;
  // Last: from its end on nobody calls the voice control.
  norix::Assistant _assistant;
  Ecore_Timer *_clock = nullptr;
};

struct Application {
  Player player;
  std::optional<Session> session;
};

bool create(void *userData) {
  // No icons of a desktop are shown: without this, a daemon is started that looks for them.
  efreet_cache_disable();
  // A device's main function has done so already; then this counts only.
  elm_init(0, nullptr);
  auto &application = *static_cast<Application *>(userData);
  try {
    application.session.emplace(application.player);
    return true;
  } catch (const norix::Error &error) {
    dlog_print(DLOG_ERROR, "PLAYER", "%s", error.what());
    elm_shutdown(); // After false, terminate is not called.
    return false;
  }
}

void terminate(void *userData) {
  static_cast<Application *>(userData)->session.reset();
  elm_shutdown();
}

} // namespace

int main(int argc, char **argv) {
  if (VoiceControl::printsDeclarations(argc, argv)) {
    return 0;
  }
  Application application;
  ui_app_lifecycle_callback_s callbacks = {};
  callbacks.create = create;
  callbacks.terminate = terminate;

  return ui_app_main(argc, argv, &callbacks, &application);
}
