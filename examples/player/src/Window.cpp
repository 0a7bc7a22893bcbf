// SPDX-License-Identifier: Apache-2.0
#include "Window.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace {

constexpr int kWidth = 560;
constexpr int kHeight = 300;
constexpr int kPadding = 16;
constexpr int kCoverSize = 168;

std::string clock(int seconds) {
  std::array<char, 16> text{};
  (void)std::snprintf(text.data(), text.size(), "%d:%02d", seconds / 60, seconds % 60);
  return text.data();
}

// Text that Elementary does not take for markup: what an assistant sends may hold anything.
std::string plain(const std::string &text) {
  char *const markup = elm_entry_utf8_to_markup(text.c_str());
  std::string result = markup != nullptr ? markup : "";
  std::free(markup);
  return result;
}

void setText(Evas_Object *label, const std::string &style, const std::string &text) {
  elm_object_text_set(label, ("<align=left><font_size=" + style + ">" + plain(text)).c_str());
}

void fill(Evas_Object *object) {
  evas_object_size_hint_weight_set(object, EVAS_HINT_EXPAND, 0);
  evas_object_size_hint_align_set(object, EVAS_HINT_FILL, 0.5);
  evas_object_show(object);
}

} // namespace

Window::Window(std::function<void()> closed)
    : _closed(std::move(closed)), _window(elm_win_util_standard_add("player", "Player")) {
  evas_object_smart_callback_add(
      _window, "delete,request",
      [](void *self, Evas_Object *, void *) { static_cast<Window *>(self)->_closed(); }, this);

  Evas_Object *const panel = addPanel();
  _cover = addCover(panel);
  _title = addLabel(panel, 0, 1);
  _artist = addLabel(panel, 1, 1);
  _position = addBar(panel, 2, "");
  _volume = addBar(panel, 3, "Volume");
  _request = addLabel(panel, 4, 0);
  _answer = addLabel(panel, 5, 0);
  showRequest("", "");
  evas_object_resize(_window, kWidth, kHeight);
  evas_object_show(_window);
}

Evas_Object *Window::addPanel() {
  Evas_Object *const panel = elm_table_add(_window);
  elm_table_padding_set(panel, kPadding, kPadding / 2);
  evas_object_size_hint_weight_set(panel, EVAS_HINT_EXPAND, EVAS_HINT_EXPAND);
  evas_object_size_hint_align_set(panel, EVAS_HINT_FILL, EVAS_HINT_FILL);
  evas_object_show(panel);

  // A padding is for what lies in a box.
  Evas_Object *const frame = elm_box_add(_window);
  evas_object_size_hint_padding_set(panel, kPadding, kPadding, kPadding, kPadding);
  elm_box_pack_end(frame, panel);
  evas_object_size_hint_weight_set(frame, EVAS_HINT_EXPAND, EVAS_HINT_EXPAND);
  elm_win_resize_object_add(_window, frame);
  evas_object_show(frame);
  return panel;
}

Evas_Object *Window::addCover(Evas_Object *panel) {
  Evas_Object *const cover = evas_object_rectangle_add(evas_object_evas_get(_window));
  evas_object_size_hint_min_set(cover, kCoverSize, kCoverSize);
  elm_table_pack(panel, cover, 0, 0, 1, 4);
  evas_object_show(cover);

  Evas_Object *const note = elm_label_add(_window);
  elm_object_text_set(note, "<align=center><font_size=72><color=#ffffff80>♪");
  elm_table_pack(panel, note, 0, 0, 1, 4);
  evas_object_show(note);
  return cover;
}

Evas_Object *Window::addLabel(Evas_Object *panel, int row, int firstColumn) {
  Evas_Object *const label = elm_label_add(_window);
  elm_label_ellipsis_set(label, EINA_TRUE);
  elm_table_pack(panel, label, firstColumn, row, 2 - firstColumn, 1);
  fill(label);
  return label;
}

Evas_Object *Window::addBar(Evas_Object *panel, int row, const char *label) {
  Evas_Object *const bar = elm_progressbar_add(_window);
  elm_object_text_set(bar, label);
  elm_table_pack(panel, bar, 1, row, 1, 1);
  fill(bar);
  return bar;
}

void Window::show(const Player &player) {
  const Track &track = player.track();
  const unsigned colour = track.cover;
  evas_object_color_set(_cover, static_cast<int>(colour >> 16U & 0xffU),
                        static_cast<int>(colour >> 8U & 0xffU), static_cast<int>(colour & 0xffU),
                        0xff);
  setText(_title, "26", track.title);
  setText(_artist, "14", std::string(track.artist) + (player.isPlaying() ? "" : "  –  paused"));

  elm_progressbar_value_set(_position, static_cast<double>(player.position()) / track.seconds);
  elm_progressbar_unit_format_set(
      _position, (clock(player.position()) + " / " + clock(track.seconds)).c_str());
  elm_progressbar_value_set(_volume, static_cast<double>(player.volume()) / Player::kMaxVolume);
}

void Window::showRequest(const std::string &request, const std::string &answer) {
  setText(_request, "12", "The assistant asked:  " + request);
  setText(_answer, "12", "It was told:  " + answer);
}
