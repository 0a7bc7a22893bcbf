// SPDX-License-Identifier: Apache-2.0
#ifndef EXAMPLE_PLAYER_WINDOW_H
#define EXAMPLE_PLAYER_WINDOW_H

#include "Player.h"

#include <Elementary.h>
#include <functional>
#include <string>

/** @brief The window: what is played, and what the assistant asked for last. */
class Window {
public:
  /** @param closed  Called when the user closes the window */
  explicit Window(std::function<void()> closed);
  Window(const Window &) = delete;
  Window &operator=(const Window &) = delete;
  ~Window() { evas_object_del(_window); }

  void show(const Player &player);
  /** @brief Shows a request and its result. */
  void showRequest(const std::string &request, const std::string &answer);

private:
  Evas_Object *addPanel();
  Evas_Object *addCover(Evas_Object *panel);
  Evas_Object *addLabel(Evas_Object *panel, int row, int firstColumn);
  Evas_Object *addBar(Evas_Object *panel, int row, const char *label);

  std::function<void()> _closed;
  // Deletes the others with it.
  Evas_Object *const _window;
  Evas_Object *_cover = nullptr;
  Evas_Object *_title = nullptr;
  Evas_Object *_artist = nullptr;
  Evas_Object *_position = nullptr;
  Evas_Object *_volume = nullptr;
  Evas_Object *_request = nullptr;
  Evas_Object *_answer = nullptr;
};

#endif
