// SPDX-License-Identifier: Apache-2.0
#include "VoiceControl.h"

#include <dlog.h>
#include <nlohmann/json.hpp>
#include <norix.h>

namespace {

using nlohmann::json;

constexpr const char *kTag = "MUSIC";
constexpr double kLoadingSeconds = 0.5;

bool succeeded(const char *call, int result) {
  if (result != NORIX_ERROR_NONE) {
    dlog_print(DLOG_ERROR, kTag, "%s failed with %d", call, result);
  }
  return result == NORIX_ERROR_NONE;
}

VoiceControl &control(void *self) {
  return *static_cast<VoiceControl *>(self);
}

void answer(void *request, const std::string &result) {
  succeeded("norix_complete_action_execution",
            norix_complete_action_execution(request, result.c_str()));
}

bool registerAction(const char *actionId, norix_action_execution_cb callback, void *self) {
  return succeeded(actionId, norix_set_action_execution_cb(actionId, callback, self));
}

// The parameters of an action are one text of the request bundle. What is in it is between the
// assistant and the application; here it is JSON. Whatever else comes makes a discarded value.
json parseParams(bundle *params) {
  char *text = nullptr; // Borrowed from the bundle.
  if (bundle_get_str(params, ACTION_PARAMS, &text) != BUNDLE_ERROR_NONE) {
    return json(json::value_t::discarded);
  }
  return json::parse(text, nullptr, false);
}

} // namespace

bool VoiceControl::start() {
  if (!succeeded("norix_initialize", norix_initialize())) {
    return false;
  }
  _isStarted = true;
  return registerCallbacks();
}

void VoiceControl::stop() {
  if (!_isStarted) {
    return;
  }
  forgetNext();
  // Unregisters the callbacks too: from here on, nothing calls this object any more.
  succeeded("norix_deinitialize", norix_deinitialize());
  _isStarted = false;
}

bool VoiceControl::registerCallbacks() {
  return succeeded("norix_set_app_state_request_cb", norix_set_app_state_request_cb(onState, this))
         && registerAction("musicPlay", onPlay, this) && registerAction("musicPause", onPause, this)
         && registerAction("musicNext", onNext, this)
         && registerAction("musicVolume", onVolume, this)
         && registerAction("musicSing", onSing, this);
}

void VoiceControl::onState(void *request, void *self) {
  succeeded("norix_complete_app_state_request",
            norix_complete_app_state_request(request, control(self).state().c_str()));
}

void VoiceControl::onPlay(void *request, bundle * /*params*/, void *self) {
  control(self)._player.play();
  answer(request, "Playing " + control(self)._player.title());
}

void VoiceControl::onPause(void *request, bundle * /*params*/, void *self) {
  control(self)._player.pause();
  answer(request, "The music is paused");
}

// An answer may come later, within 30 seconds: keep the handle, return, and answer when the work is
// done. Never wait inside a callback: the main loop stands still meanwhile.
void VoiceControl::onNext(void *request, bundle * /*params*/, void *self) {
  VoiceControl &voice = control(self);
  voice.forgetNext();

  voice._nextTimer = ecore_timer_add(kLoadingSeconds, onTrackLoaded, self);
  if (voice._nextTimer == nullptr) {
    answer(request, "The next track cannot be loaded");
    return;
  }
  voice._nextRequest = request;
}

// Should the assistant have asked for something else since, then it does not wait for this answer
// any more; the library drops it, and that is no error.
Eina_Bool VoiceControl::onTrackLoaded(void *self) {
  VoiceControl &voice = control(self);
  voice._nextTimer = nullptr; // Ends by itself, by the value returned.
  voice._player.next();

  answer(voice._nextRequest, "Playing " + voice._player.title());
  return ECORE_CALLBACK_CANCEL;
}

void VoiceControl::forgetNext() {
  if (_nextTimer != nullptr) {
    ecore_timer_del(_nextTimer);
    _nextTimer = nullptr;
  }
}

// An action that cannot be done is answered too. The library knows failures of its own only, such
// as an answer that did not come; that the volume is wrong is a result like any other.
void VoiceControl::onVolume(void *request, bundle *params, void *self) {
  answer(request, control(self).changeVolume(params));
}

std::string VoiceControl::changeVolume(bundle *params) {
  const json wanted = parseParams(params);
  const bool hasVolume =
      wanted.is_object() && wanted.contains("volume") && wanted["volume"].is_number_integer();
  if (!hasVolume) {
    return R"(Error: musicVolume needs a whole number, as in {"volume": 40})";
  }

  const auto volume = wanted["volume"].get<json::number_integer_t>();
  if (volume < 0 || volume > Player::kMaxVolume) {
    return "Error: the volume goes from 0 to " + std::to_string(Player::kMaxVolume) + ", not to "
           + wanted["volume"].dump();
  }
  _player.setVolume(static_cast<int>(volume));
  return "The volume is " + std::to_string(volume);
}

// What not to do: this request is never answered. After 30 seconds the library tells the assistant
// that it timed out.
void VoiceControl::onSing(void * /*request*/, bundle * /*params*/, void * /*self*/) {
  dlog_print(DLOG_INFO, kTag, "this player does not sing, and does not say so");
}

std::string VoiceControl::state() const {
  return json{
      {"playing", _player.isPlaying()}, {"title", _player.title()}, {"volume", _player.volume()}}
      .dump();
}
