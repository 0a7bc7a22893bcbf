// SPDX-License-Identifier: Apache-2.0
//
// The library between hostile assistants and a careless application. The input is a script: steps
// of one byte, each followed by what it needs. Time passes when the script says so. Whatever
// happens, what the library sends is what the protocol says.
#include "ActionRequestImpl/ActionRequestImpl.h"
#include "NorixImpl/NorixCommonData.h"
#include "NorixImpl/NorixImpl.h"
#include "StateRequestImpl/StateRequestImpl.h"
#include "requests/Clock.h"
#include "requests/Leftovers.h"
#include "requests/Loopback.h"
#include "support/Input.h"
#include "support/bundles.h"
#include "support/check.h"
#include "support/environment.h"

#include <norix.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace {

using fuzz::BundlePtr;
using fuzz::check;
using fuzz::Clock;
using fuzz::Input;
using fuzz::Loopback;

constexpr std::size_t kMaxSteps = 64;

constexpr std::array<const char *, 3> kSenders{"com.valtren.tizen.norix", "org.example.other",
                                               "%s%n%s"};
constexpr std::array<const char *, 4> kInstances{"1", "2", "3", "4"};
// Short ones too: the handle of a request that came too early is the id's text, read as a number.
constexpr std::array<const char *, 5> kActionIds{"play", "", "x", "getAppContext", "%n%s%s"};
constexpr std::array<double, 5> kPauses{0.01, 0.02, 0.13, 29.9, 31};

template <std::size_t size>
const char *choose(const std::array<const char *, size> &texts, Input &input) {
  return texts[input.below(size)];
}

// The application, which does in its callbacks what the script says.
class Application {
public:
  enum class Reaction {
    Nothing,
    Complete,
    CompleteWrongly,
    Unset,
    Deinitialise,
    Restart,
    Requested
  };
  static constexpr std::size_t kReactions = 7;

  void reactWith(Reaction reaction) { _reaction = reaction; }

  void use(Input &input) {
    switch (input.below(8)) {
    case 0:
      (void)norix_set_action_execution_cb(choose(kActionIds, input), onAction, this);
      return;
    case 1:
      (void)norix_unset_action_execution_cb(choose(kActionIds, input));
      return;
    case 2:
      (void)norix_set_app_state_request_cb(onState, this);
      return;
    case 3:
      (void)norix_unset_app_state_request_cb();
      return;
    case 4:
      (void)norix_complete_action_execution(oldHandle(input), std::string(input.text()).c_str());
      return;
    case 5:
      (void)norix_complete_app_state_request(oldHandle(input), std::string(input.text()).c_str());
      return;
    case 6:
      askForName(oldHandle(input));
      return;
    default:
      (void)norix_deinitialize();
      (void)norix_initialize();
    }
  }

private:
  static void onState(void *handle, void *data) {
    static_cast<Application *>(data)->react(handle, norix_complete_app_state_request,
                                            norix_complete_action_execution);
  }

  static void onAction(void *handle, bundle *params, void *data) {
    fuzz::walk(params);
    static_cast<Application *>(data)->react(handle, norix_complete_action_execution,
                                            norix_complete_app_state_request);
  }

  using Complete = int (*)(void *, const char *);

  void react(void *handle, Complete complete, Complete completeOther) {
    check(handle != nullptr, "a request has a handle");
    _handles.push_back(handle);
    switch (_reaction) {
    case Reaction::Nothing:
      return;
    case Reaction::Complete:
      (void)complete(handle, "done");
      return;
    case Reaction::CompleteWrongly:
      (void)completeOther(handle, nullptr);
      return;
    case Reaction::Unset:
      (void)norix_unset_app_state_request_cb();
      (void)norix_unset_action_execution_cb("play");
      return;
    case Reaction::Deinitialise:
      (void)norix_deinitialize();
      return;
    case Reaction::Restart:
      (void)norix_deinitialize();
      (void)norix_initialize();
      return;
    case Reaction::Requested:
      Loopback::instance().disconnect(kInstances.front());
      (void)complete(handle, "");
    }
  }

  void *oldHandle(Input &input) {
    const std::size_t number = input.byte();
    return number == 0 || _handles.empty() ? nullptr : _handles[number % _handles.size()];
  }

  static void askForName(void *handle) {
    char *name = nullptr;
    const int result = norix_get_action_name(handle, &name);
    check((result == NORIX_ERROR_NONE) == (name != nullptr), "there is a name, or an error");
    std::free(name);
  }

  Reaction _reaction = Reaction::Nothing;
  std::vector<void *> _handles; // All that it ever got.
};

// What an assistant sends, written with the platform's own functions.
class Message {
public:
  explicit Message(int methodId) {
    check(rpc_port_parcel_create(&_parcel) == 0, "a parcel can be made");
    write(methodId);
  }
  Message(const Message &) = delete;
  Message &operator=(const Message &) = delete;
  ~Message() { rpc_port_parcel_destroy(_parcel); }

  void write(int number) { (void)rpc_port_parcel_write_int32(_parcel, number); }
  void write(bool value) { (void)rpc_port_parcel_write_bool(_parcel, value); }
  void write(bundle *b) { (void)rpc_port_parcel_write_bundle(_parcel, b); }

  std::string fields() const {
    constexpr std::size_t kHeaderSize = 24;
    void *raw = nullptr;
    unsigned int size = 0;
    (void)rpc_port_parcel_get_raw(_parcel, &raw, &size);
    return std::string(static_cast<const char *>(raw), size).substr(kHeaderSize);
  }

private:
  rpc_port_parcel_h _parcel = nullptr;
};

std::string readRegistration(Input &input) {
  Message message(2);
  message.write(static_cast<int>(input.byte()) - 1);
  message.write(static_cast<int>(input.byte()) - 1);
  message.write(input.below(2) == 1);
  return message.fields();
}

std::string readRequest(Input &input) {
  const BundlePtr request(bundle_create());
  (void)bundle_add_str(request.get(), ACTION_ID, choose(kActionIds, input));
  const std::string_view id = input.text(); // Assistants send eight bytes; others send others.
  (void)bundle_add_byte(request.get(), REQUEST_ID, id.data(), id.size());
  (void)bundle_add_str(request.get(), ACTION_PARAMS, std::string(input.text()).c_str());
  if (input.below(2) == 1) {
    (void)bundle_add_str_array(request.get(), "array", nullptr, 3);
  }
  Message message(4);
  message.write(request.get());
  return message.fields();
}

std::string readMessage(Input &input) {
  switch (input.below(4)) {
  case 0:
    return readRegistration(input);
  case 1:
    return Message(3).fields();
  case 2:
    return readRequest(input);
  default:
    return std::string(input.longText());
  }
}

class ReceivedParcel {
public:
  explicit ReceivedParcel(const std::string &raw) {
    const auto size = static_cast<unsigned int>(raw.size());
    check(rpc_port_parcel_create_from_raw(&_parcel, raw.data(), size) == 0,
          "what the library sends is a parcel");
  }
  ReceivedParcel(const ReceivedParcel &) = delete;
  ReceivedParcel &operator=(const ReceivedParcel &) = delete;
  ~ReceivedParcel() { rpc_port_parcel_destroy(_parcel); }

  int number() const {
    int value = 0;
    check(rpc_port_parcel_read_int32(_parcel, &value) == 0, "a number stands where it belongs");
    return value;
  }

  void skipDelegate() const {
    (void)number();
    (void)number();
    bool once = false;
    check(rpc_port_parcel_read_bool(_parcel, &once) == 0, "a delegate says whether it is for once");
  }

  std::string text() const {
    char *value = nullptr;
    check(rpc_port_parcel_read_string(_parcel, &value) == 0, "a text stands where it belongs");
    std::string copy(value);
    std::free(value);
    return copy;
  }

  BundlePtr response() const {
    bundle *value = nullptr;
    check(rpc_port_parcel_read_bundle(_parcel, &value) == 0, "a bundle stands where it belongs");
    return BundlePtr(value);
  }

private:
  rpc_port_parcel_h _parcel = nullptr;
};

void checkResponse(bundle *response) {
  const char *status = bundle_get_val(response, KEY_STATUS_CODE);
  check(status != nullptr, "a response has a status");
  const bool isAnswer = std::strcmp(status, ACTION_EXECUTION_SUCCESS) == 0;
  check(isAnswer || std::strcmp(status, ACTION_EXECUTION_FAILURE) == 0, "a status is one of two");
  check((bundle_get_val(response, KEY_STATUS_MESSAGE) == nullptr) == isAnswer,
        "a failure says why, an answer does not");
  check((bundle_get_val(response, KEY_ACTION_RESULT) == nullptr)
            != (bundle_get_val(response, KEY_APP_STATE) == nullptr),
        "a response is about an action or about the state");
  void *id = nullptr;
  std::size_t size = 0;
  check(bundle_get_byte(response, REQUEST_ID, &id, &size) == 0 && size == 8,
        "a response names its request");
}

void checkSent() {
  for (const Loopback::Sent &sent : Loopback::instance().takeSent()) {
    const ReceivedParcel parcel(sent.parcel);
    const int methodId = parcel.number();
    if (sent.port == RPC_PORT_PORT_MAIN) {
      const int result = parcel.number();
      check(methodId == 0 && (result == 0 || result == -1), "the main port carries results");
      continue;
    }
    check(methodId == 1, "the callback port carries callbacks");
    parcel.skipDelegate();
    check(parcel.text() == fuzz::kAppId, "a callback names the application");
    checkResponse(parcel.response().get());
  }
}

void takeStep(Application &application, Input &input) {
  Loopback &loopback = Loopback::instance();
  const std::size_t step = input.byte();
  const std::string instance = kInstances[step / 8 % kInstances.size()];
  switch (step % 8) {
  case 0:
    loopback.connect(choose(kSenders, input), instance);
    return;
  case 1:
  case 2:
    loopback.deliver(instance, readMessage(input));
    return;
  case 3:
    loopback.disconnect(instance);
    return;
  case 4:
    Clock::instance().advance(kPauses[input.below(kPauses.size())]);
    return;
  case 5:
    application.reactWith(static_cast<Application::Reaction>(input.below(Application::kReactions)));
    return;
  default:
    application.use(input);
  }
}

template <typename Object>
void makeAnew() {
  delete Object::_instance;
  Object::_initInstance();
}

// Every input meets the library as a new process does.
void startAnew() {
  fuzz::resetLoopback();
  makeAnew<norix::NorixImpl>();
  makeAnew<norix::NorixCommonData>();
  makeAnew<norix::StateRequestImpl>();
  makeAnew<norix::ActionRequestImpl>();
  check(norix_initialize() == NORIX_ERROR_NONE, "the library can be initialised");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  NORIX_PROXY_ALLOW_APPID_LIST_PATH = "/nonexistent/"; // Everybody is served.
  startAnew();
  Input input(data, size);
  Application application;
  for (std::size_t i = 0; i < kMaxSteps && !input.empty(); ++i) {
    takeStep(application, input);
    checkSent();
  }

  Clock::instance().advance(31); // Whatever waits comes to its end.
  checkSent();
  (void)norix_deinitialize();
  Clock::instance().stop();
  fuzz::releaseLeftovers();
  return 0;
}
