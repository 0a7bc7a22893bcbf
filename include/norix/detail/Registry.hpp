/* SPDX-License-Identifier: Apache-2.0 */
#ifndef NORIX_DETAIL_REGISTRY_HPP
#define NORIX_DETAIL_REGISTRY_HPP

#include <norix.h>
#include <norix/Action.hpp>
#include <norix/Error.hpp>
#include <norix/State.hpp>
#include <norix/detail/Handler.hpp>

#include <bundle.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace norix {
namespace detail {

// What an Assistant has registered with the library, and the library's life.
class Registry {
public:
  enum class Life { Declaring, Connected, MovedFrom };

  // An action as it was registered: who is called, and what is declared.
  struct Registered {
    OwnedRegistration registration{};
    Action about{""};
    std::string parameters{};
  };

  explicit Registry(Life life = Life::Declaring) : _life(life) {}
  Registry(const Registry &) = delete;
  Registry &operator=(const Registry &) = delete;

  ~Registry() {
    if (_life != Life::Connected) {
      return;
    }
    Exchange &exchange = Exchange::instance();
    exchange.close();
    guarded([] { static_cast<void>(norix_deinitialize()); },
            [](const char *why) {
              dlog_print(DLOG_ERROR, kLogTag, "norix_deinitialize failed with an exception: %s",
                         why);
            });
  }

  // Whether this thread may take it down.
  bool mayEndHere() const noexcept {
    return _life != Life::Connected || Exchange::instance().isMainThread();
  }

  std::optional<Error> connect() {
    if (!Exchange::instance().open()) {
      return Error("norix::Assistant", NORIX_ERROR_OPERATION_FAILED,
                   "there is an Assistant already; a process has one at a time");
    }
    std::optional<Error> error = guarded([] { return initialize(); }, noApplication);
    if (error.has_value()) {
      Exchange::instance().close();
    } else {
      _life = Life::Connected;
    }
    return error;
  }

  std::optional<Error> setState(Handled handled, State about) {
    OwnedRegistration registration =
        makeRegistration(ACTION_GET_APP_STATE, std::move(handled.handler));
    if (auto error = call("norix_set_app_state_request_cb", [&registration] {
          return norix_set_app_state_request_cb(onState, registration.get());
        })) {
      return error;
    }
    _appState = std::move(registration);
    _aboutState = std::move(about);
    return std::nullopt;
  }

  std::optional<Error> setAction(const Action &action, const Handled &handled) {
    if (!handled.complaint.empty()) {
      return Error("norix::Assistant::onAction", NORIX_ERROR_INVALID_PARAMETER, handled.complaint);
    }
    for (const std::string &id : action.ids()) {
      if (auto error = setAction(id, action, handled)) {
        return error;
      }
    }
    return std::nullopt;
  }

  std::optional<Error> unsetState() {
    auto error = call("norix_unset_app_state_request_cb", norix_unset_app_state_request_cb);
    if (!error.has_value()) {
      _appState.reset();
    }
    return error;
  }

  std::optional<Error> unsetAction(const std::string &id) {
    auto error = call("norix_unset_action_execution_cb",
                      [&id] { return norix_unset_action_execution_cb(id.c_str()); });
    if (!error.has_value()) {
      _actions.erase(id);
    }
    return error;
  }

  const std::map<std::string, Registered> &actions() const noexcept { return _actions; }
  bool hasState() const noexcept { return _appState != nullptr; }
  const State &aboutState() const noexcept { return _aboutState; }

private:
  static void onState(void *handle, void *registration) noexcept {
    static_cast<Registration *>(registration)
        ->received(Exchange::instance().begin(Kind::State, handle), nullptr);
  }

  static void onAction(void *handle, bundle *request, void *registration) noexcept {
    auto *const registered = static_cast<Registration *>(registration);
    char *params = nullptr;
    static_cast<void>(bundle_get_str(request, ACTION_PARAMS, &params));
    Exchange &exchange = Exchange::instance();
    registered->received(isEarly(handle, request, registered->actionId())
                             ? exchange.beginEarly()
                             : exchange.begin(Kind::Action, handle),
                         params);
  }

  // A request that waited for its registration has the text of its own id as its handle; all others
  // have a number, so that hardly any needs a look into the bundle.
  static bool isEarly(const void *handle, bundle *request, const std::string &actionId) noexcept {
    if (*static_cast<const char *>(handle) != actionId[0]) {
      return false;
    }
    char *id = nullptr;
    static_cast<void>(bundle_get_str(request, ACTION_ID, &id));
    return handle == static_cast<void *>(id);
  }

  static std::optional<Error> initialize() {
    const int result = norix_initialize();
    switch (result) {
    case NORIX_ERROR_NONE:
      return std::nullopt;
    case NORIX_ERROR_NOT_SUPPORTED:
      return Error("norix_initialize", result,
                   std::string("declare the SDK version in the manifest, as metadata with the key ")
                       + NORIX_SDK_VERSION_METADATA_KEY
                       + " and a value that does not contain 1.0-alpha");
    case NORIX_ERROR_OPERATION_FAILED:
      return Error("norix_initialize", result,
                   "the port cannot be listened on: end the other process of this application, and "
                   "make sure that the main loop exists");
    default:
      return Error("norix_initialize", result, "see the platform log, tag NORIX-APPSDK");
    }
  }

  static std::optional<Error> noApplication(const char *why) {
    return Error("norix_initialize", NORIX_ERROR_OPERATION_FAILED,
                 std::string("it threw '") + why
                     + "': start the process as an application, so that it has an application id, "
                       "and make the Assistant while the main loop exists");
  }

  std::optional<Error> setAction(const std::string &id, const Action &action,
                                 const Handled &handled) {
    if (auto error = checkId(id)) {
      return error;
    }
    Registered made{makeRegistration(id, handled.handler), action, handled.parameters};
    // Before the library knows of it: nothing may fail between there and here.
    Registered &kept = _actions[id];
    auto error = call("norix_set_action_execution_cb", [&id, &made] {
      return norix_set_action_execution_cb(id.c_str(), onAction, made.registration.get());
    });
    if (!error.has_value()) {
      std::swap(kept, made);
    } else if (kept.registration == nullptr) {
      _actions.erase(id);
    }
    return error;
  }

  static std::optional<Error> checkId(const std::string &id) {
    const char *advice = nullptr;
    if (id.empty() || id.find('\0') != std::string::npos) {
      advice = "an action's id is a text without NUL characters, and not empty";
    } else if (id == ACTION_GET_APP_STATE) {
      advice = "this id means the state request, which never reaches an action: use onState()";
    }
    if (advice == nullptr) {
      return std::nullopt;
    }
    return Error("norix::Assistant::onAction(\"" + id + "\")", NORIX_ERROR_INVALID_PARAMETER,
                 advice);
  }

  template <class Function>
  std::optional<Error> call(const char *name, Function function) const {
    if (_life == Life::Declaring) {
      return std::nullopt;
    }
    if (_life == Life::MovedFrom) {
      return Error(name, NORIX_ERROR_INVALID_PARAMETER, "this Assistant was moved from");
    }
    if (!Exchange::instance().isMainThread()) {
      return Error(name, NORIX_ERROR_OPERATION_FAILED,
                   "this is not the main loop's thread; register there");
    }
    const int result =
        guarded(function, [](const char * /*what*/) -> int { return NORIX_ERROR_OUT_OF_MEMORY; });
    if (result == NORIX_ERROR_NONE) {
      return std::nullopt;
    }
    return Error(
        name, result,
        result == NORIX_ERROR_OPERATION_FAILED
            ? "the library is not initialised any more: nothing but the Assistant may call "
              "norix_deinitialize()"
            : "memory is short");
  }

  Life _life;
  OwnedRegistration _appState{};
  State _aboutState{};
  std::map<std::string, Registered> _actions{};
};

// The way to the declarations, which norix/json.hpp opens: there is JSON.
struct NeedsJson;
template <class Json>
struct DeclarationsOf {
  static std::string text(const Registry & /*registry*/) {
    static_assert(Never<Json>::value, "norix: include <norix/json.hpp> for declarations()");
    return {};
  }
};

} // namespace detail
} // namespace norix

#endif
