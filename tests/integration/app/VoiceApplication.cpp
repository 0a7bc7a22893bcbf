// SPDX-License-Identifier: Apache-2.0
#include "integration/app/VoiceApplication.h"

#include "integration/app/CommandInput.h"
#include "integration/app/LogWatch.h"
#include "integration/app/ProcessCalls.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <utility>

namespace integration {
namespace {

using nlohmann::json;

// What the library logs when it parks a request for which nothing is registered yet.
constexpr const char *kParked = "waiting for sometime to see if reg can happen";

const char *textOf(const json &value) {
  return value.is_null() ? nullptr : value.get_ref<const std::string &>().c_str();
}

std::string stringIn(bundle *request, const char *key) {
  const char *value = bundle_get_val(request, key);
  return value == nullptr ? std::string() : value;
}

void addText(const char *key, const int type, const bundle_keyval_t *value, void *texts) {
  void *text = nullptr;
  size_t size = 0;
  if (type == BUNDLE_TYPE_STR
      && bundle_keyval_get_basic_val(const_cast<bundle_keyval_t *>(value), &text, &size)
             == BUNDLE_ERROR_NONE) {
    (*static_cast<json *>(texts))[key] = static_cast<const char *>(text);
  }
}

json textsIn(bundle *request) {
  json texts = json::object();
  bundle_foreach(request, addText, &texts);
  return texts;
}

// A handle may point at a number or at a text; the latter need not be aligned for an int.
int numberAt(const void *handle) {
  int number = 0;
  std::memcpy(&number, handle, sizeof number);
  return number;
}

std::uint64_t idIn(bundle *request) {
  void *bytes = nullptr;
  size_t size = 0;
  std::uint64_t id = 0;
  if (bundle_get_byte(request, REQUEST_ID, &bytes, &size) == BUNDLE_ERROR_NONE
      && size == sizeof id) {
    std::memcpy(&id, bytes, sizeof id);
  }
  return id;
}

} // namespace

void VoiceApplication::useAllowList(const std::string &path) {
  // The library keeps reading through the pointers.
  static std::string folder;
  static std::string name;
  const size_t slash = path.rfind('/');
  folder = path.substr(0, slash + 1);
  name = path.substr(slash + 1);
  NORIX_PROXY_ALLOW_APPID_LIST_PATH = folder.c_str();
  NORIX_PROXY_ALLOW_APPID_LIST_FILE_NAME = name.c_str();
}

void VoiceApplication::execute(const json &command) {
  const std::string name = command.at("call");
  if (name == "actionName") {
    reportActionName(command);
  } else {
    report({{"result", call(name, command)}});
  }
}

int VoiceApplication::call(const std::string &name, const json &command) {
  if (name == "initialize") {
    return norix_initialize();
  }
  if (name == "deinitialize") {
    return norix_deinitialize();
  }
  if (name == "setState") {
    return norix_set_app_state_request_cb(onState, this);
  }
  if (name == "unsetState") {
    return norix_unset_app_state_request_cb();
  }
  if (name == "setAction") {
    return setAction(command.at("id"));
  }
  if (name == "unsetAction") {
    return norix_unset_action_execution_cb(textOf(command.at("id")));
  }
  if (name == "completeState" || name == "completeAction") {
    return complete(name, command);
  }
  return arrange(name, command);
}

int VoiceApplication::complete(const std::string &name, const json &command) {
  void *handle = _handles.at(command.at("request"));
  const char *text = textOf(command.at("text"));
  return name == "completeState" ? norix_complete_app_state_request(handle, text)
                                 : norix_complete_action_execution(handle, text);
}

// Commands that take effect later, without another message of the test.
int VoiceApplication::arrange(const std::string &name, const json &command) {
  if (name == "answerAtOnce") {
    _answerAtOnce = command.at("text");
  } else if (name == "deinitialiseAtOnce") {
    _deinitialiseAtOnce = true;
  } else if (name == "throwAtOnce") {
    _throwAtOnce = true;
  } else if (name == "reportLog") {
    const std::string text = command.at("text");
    LogWatch::once(text, [text] { report({{"event", "log"}, {"text", text}}); });
  } else if (name == "setActionWhenParked") {
    _lateActionId = command.at("id");
    const double seconds = command.at("seconds");
    LogWatch::once(kParked, [this, seconds] { ecore_timer_add(seconds, onLate, this); });
  } else if (const std::optional<int> result = callProcess(name, command)) {
    return *result;
  } else {
    throw std::invalid_argument("unknown command " + name);
  }
  return NORIX_ERROR_NONE;
}

void VoiceApplication::reportActionName(const json &command) {
  char *raw = nullptr;
  const int result = norix_get_action_name(_handles.at(command.at("request")), &raw);
  const std::unique_ptr<char, decltype(&std::free)> name(raw, &std::free);
  report({{"result", result}, {"name", name ? json(name.get()) : json()}});
}

int VoiceApplication::setAction(const std::string &id) {
  return norix_set_action_execution_cb(id.c_str(), onAction, this);
}

void VoiceApplication::received(const char *kind, void *handle, bundle *request) {
  json event = {{"event", kind},
                {"request", _handles.size()},
                {"handleNumber", numberAt(handle)},
                {"handleText", static_cast<const char *>(handle)}};
  if (request != nullptr) {
    event["actionId"] = stringIn(request, ACTION_ID);
    event["actionType"] = stringIn(request, ACTION_TYPE);
    event["actionParams"] = stringIn(request, ACTION_PARAMS);
    event["requestId"] = idIn(request);
    event["texts"] = textsIn(request);
  }
  _handles.push_back(handle);
  report(event);

  if (_deinitialiseAtOnce) {
    report({{"event", "deinitialised"}, {"result", norix_deinitialize()}});
  }
  if (std::exchange(_throwAtOnce, false)) {
    throw std::runtime_error("a mistake of the application");
  }
}

void VoiceApplication::onState(void *handle, void *userData) {
  auto *application = static_cast<VoiceApplication *>(userData);
  application->received("state", handle, nullptr);
  if (application->_answerAtOnce) {
    norix_complete_app_state_request(handle, application->_answerAtOnce->c_str());
  }
}

void VoiceApplication::onAction(void *handle, bundle *request, void *userData) {
  auto *application = static_cast<VoiceApplication *>(userData);
  application->received("action", handle, request);
  if (application->_answerAtOnce) {
    norix_complete_action_execution(handle, application->_answerAtOnce->c_str());
  }
}

Eina_Bool VoiceApplication::onLate(void *userData) {
  auto *application = static_cast<VoiceApplication *>(userData);
  application->setAction(application->_lateActionId);
  return ECORE_CALLBACK_CANCEL;
}

} // namespace integration
