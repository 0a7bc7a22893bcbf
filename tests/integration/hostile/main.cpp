// SPDX-License-Identifier: Apache-2.0
//
// An application that listens where applications of the library do, and answers wrongly: how is its
// argument. It shows that the assistant's side believes nothing.
#include <rpc-port-parcel.h>

#include <Ecore.h>
#include <cstdio>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace {

constexpr int kResult = 0;
constexpr int kCallback = 1;
constexpr int kSetCb = 2;

// Writes a message into the parcel; false sends none and hangs up. Without a writer there is
// silence.
using Writer = std::function<bool(rpc_port_parcel_h)>;

struct Behaviour {
  Writer result;
  Writer callback;
  bool repeats = false;
};

rpc_port_stub_h stub = nullptr;

bool hangUp(rpc_port_parcel_h /*parcel*/) {
  return false;
}

Writer ints(std::initializer_list<int> values) {
  return [values = std::vector<int>(values)](rpc_port_parcel_h parcel) {
    for (const int value : values) {
      rpc_port_parcel_write_int32(parcel, value);
    }
    return true;
  };
}

// A Callback message up to and with the delegate record.
void writeDelegate(rpc_port_parcel_h parcel, int seqId) {
  for (const int value : {kCallback, 1, seqId}) {
    rpc_port_parcel_write_int32(parcel, value);
  }
  rpc_port_parcel_write_bool(parcel, false);
}

Writer delegateOnly(int seqId) {
  return [seqId](rpc_port_parcel_h parcel) {
    writeDelegate(parcel, seqId);
    return true;
  };
}

bool appIdOnly(rpc_port_parcel_h parcel) {
  writeDelegate(parcel, 0);
  rpc_port_parcel_write_string(parcel, "org.example.hostile");
  return true;
}

bool emptyBundle(rpc_port_parcel_h parcel) {
  appIdOnly(parcel);
  bundle *empty = bundle_create();
  rpc_port_parcel_write_bundle(parcel, empty);
  bundle_free(empty);
  return true;
}

// An answer without a fault, to another request.
bool answerToAnother(rpc_port_parcel_h parcel) {
  constexpr unsigned long long kRequestId = 0;
  appIdOnly(parcel);
  bundle *response = bundle_create();
  bundle_add_str(response, "status_code", "ACTION_EXECUTION_SUCCESS");
  bundle_add_str(response, "appContext", "not asked for");
  bundle_add_byte(response, "requestId", &kRequestId, sizeof kRequestId);
  rpc_port_parcel_write_bundle(parcel, response);
  bundle_free(response);
  return true;
}

const std::map<std::string, Behaviour> &behaviours() {
  static const Writer kAccept = ints({kResult, 0});
  static const std::map<std::string, Behaviour> kAll{
      {"hang-up", {hangUp, hangUp}},
      {"hang-up-on-request", {kAccept, hangUp}},
      {"empty-result", {ints({}), hangUp}},
      {"short-result", {ints({kResult}), hangUp}},
      {"other-message-as-result", {ints({kCallback, 0}), hangUp}},
      {"unknown-result", {ints({kResult, 7}), hangUp}},
      {"empty-callback", {kAccept, ints({})}},
      {"other-message-as-callback", {kAccept, ints({kResult, 0})}},
      {"short-delegate", {kAccept, ints({kCallback, 1})}},
      {"other-delegate", {kAccept, delegateOnly(5)}},
      {"no-app-id", {kAccept, delegateOnly(0)}},
      {"no-bundle", {kAccept, appIdOnly}},
      {"empty-bundle", {kAccept, emptyBundle}},
      {"no-result", {nullptr, nullptr}},
      {"flood", {kAccept, answerToAnother, true}},
  };
  return kAll;
}

int answer(const Writer &write, rpc_port_h port) {
  if (!write) {
    return 0;
  }
  rpc_port_parcel_h reply = nullptr;
  rpc_port_parcel_create(&reply);
  const bool isSent = write(reply);
  if (isSent) {
    rpc_port_parcel_send(reply, port);
  }
  rpc_port_parcel_destroy(reply);
  return isSent ? 0 : -1;
}

Eina_Bool sendAgain(void *port) {
  return answer(answerToAnother, port) == 0 ? ECORE_CALLBACK_RENEW : ECORE_CALLBACK_CANCEL;
}

int onReceived(const char * /*sender*/, const char *instance, rpc_port_h port, void *userData) {
  const auto *behaviour = static_cast<const Behaviour *>(userData);
  rpc_port_parcel_h message = nullptr;
  if (rpc_port_parcel_create_from_port(&message, port) != RPC_PORT_ERROR_NONE) {
    return -1;
  }
  int id = 0;
  rpc_port_parcel_read_int32(message, &id);
  rpc_port_parcel_destroy(message);
  if (id == kSetCb) {
    return answer(behaviour->result, port);
  }

  rpc_port_h callbackPort = nullptr;
  rpc_port_stub_get_port(stub, RPC_PORT_PORT_CALLBACK, instance, &callbackPort);
  if (behaviour->repeats) {
    ecore_timer_add(0.0, sendAgain, callbackPort);
  }
  return answer(behaviour->callback, callbackPort);
}

} // namespace

int main(int argc, char **argv) {
  const auto found = behaviours().find(argc > 1 ? argv[1] : "");
  if (found == behaviours().end()) {
    return 2;
  }
  Behaviour behaviour = found->second;

  ecore_app_no_system_modules();
  ecore_init();
  rpc_port_stub_create(&stub, "message");
  rpc_port_stub_add_received_event_cb(stub, onReceived, &behaviour);
  if (rpc_port_stub_listen(stub) != RPC_PORT_ERROR_NONE) {
    return 1;
  }
  std::puts("listening");
  std::fflush(stdout);
  ecore_main_loop_begin();
  return 0;
}
