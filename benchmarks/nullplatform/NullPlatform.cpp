// SPDX-License-Identifier: Apache-2.0
#include "nullplatform/NullPlatform.h"

#include <Ecore.h>
#include <app_common.h>
#include <app_manager.h>
#include <bundle.h>
#include <dlog.h>
#include <norix.h>
#include <rpc-port-parcel.h>
#include <rpc-port.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

constexpr const char *kSender = "com.valtren.tizen.norix";
constexpr const char *kInstance = "1234-1-0123456789abcdef";
constexpr const char *kAppId = "org.example.null";
constexpr const char *kParams = R"({"volume":40,"title":"Rain on Tin"})";
// The keys of a request, as its sender writes them. Aligned, those that are compared: near the end
// of a page a comparison takes more instructions, and where they lie changes with every build.
alignas(32) constexpr char kActionId[] = "actionId";
constexpr const char *kActionType = "actionType";
alignas(32) constexpr char kActionParams[] = "actionParams";
constexpr const char *kRequestId = "requestId";
// The message ids of the interface "message".
constexpr int kSetCb = 2;
constexpr int kSend = 4;

struct Entry {
  const char *key;
  int type;
  const void *value;
  std::size_t size;
};

struct Timer {
  Ecore_Task_Cb function = nullptr;
  const void *data = nullptr;
  double interval = 0;
};

std::uint64_t requestId = 0;
const char *requestedAction = nullptr;
int methodId = 0;
unsigned long parcels = 0;
std::atomic<unsigned long> questionsForTheId{0};
Timer timer;
// What handles point at.
char object = 0;

rpc_port_stub_connected_event_cb connected = nullptr;
rpc_port_stub_received_event_cb received = nullptr;
void *stubData = nullptr;

bundle *theBundle() {
  return reinterpret_cast<bundle *>(&object);
}

const Entry *toEntry(bundle_keyval_t *entry) {
  return reinterpret_cast<const Entry *>(entry);
}

} // namespace

namespace benchmarks::null_platform {

void connect() {
  connected(kSender, kInstance, stubData);
  methodId = kSetCb;
  received(kSender, kInstance, &object, stubData);
}

void request(const char *actionId) {
  requestedAction = actionId;
  methodId = kSend;
  ++requestId;
  received(kSender, kInstance, &object, stubData);
}

void fireTimer() {
  const Timer due = timer;
  due.function(const_cast<void *>(due.data));
}

double timerInterval() {
  return timer.interval;
}

unsigned long sentParcels() {
  return parcels;
}

unsigned long idsAsked() {
  return questionsForTheId;
}

void (*whileIdIsAsked)() = nullptr;

} // namespace benchmarks::null_platform

bundle *bundle_create(void) {
  return theBundle();
}

bundle *bundle_dup(bundle * /*from*/) {
  return theBundle();
}

int bundle_free(bundle * /*b*/) {
  return BUNDLE_ERROR_NONE;
}

int bundle_add_str(bundle * /*b*/, const char * /*key*/, const char * /*str*/) {
  return BUNDLE_ERROR_NONE;
}

int bundle_add_byte(bundle * /*b*/, const char * /*key*/, const void * /*byte*/,
                    const size_t /*size*/) {
  return BUNDLE_ERROR_NONE;
}

int bundle_get_str(bundle * /*b*/, const char *key, char **str) {
  if (std::strcmp(key, kActionParams) == 0) {
    *str = const_cast<char *>(kParams);
    return BUNDLE_ERROR_NONE;
  }
  *str = const_cast<char *>(std::strcmp(key, kActionId) == 0 ? requestedAction : "");
  return BUNDLE_ERROR_NONE;
}

int bundle_get_byte(bundle * /*b*/, const char * /*key*/, void **byte, size_t * /*size*/) {
  *byte = &requestId;
  return BUNDLE_ERROR_NONE;
}

void bundle_foreach(bundle * /*b*/, bundle_iterator_t iterator, void *userData) {
  const std::array<Entry, 4> entries = {{
      {kActionId, BUNDLE_TYPE_STR, requestedAction, std::strlen(requestedAction) + 1},
      {kActionType, BUNDLE_TYPE_STR, "", 1},
      {kActionParams, BUNDLE_TYPE_STR, "", 1},
      {kRequestId, BUNDLE_TYPE_BYTE, &requestId, sizeof requestId},
  }};
  for (const Entry &entry : entries) {
    iterator(entry.key, entry.type, reinterpret_cast<const bundle_keyval_t *>(&entry), userData);
  }
}

int bundle_keyval_get_type(bundle_keyval_t *kv) {
  return toEntry(kv)->type;
}

int bundle_keyval_type_is_array(bundle_keyval_t * /*kv*/) {
  return 0;
}

int bundle_keyval_get_basic_val(bundle_keyval_t *kv, void **val, size_t *size) {
  *val = const_cast<void *>(toEntry(kv)->value);
  *size = toEntry(kv)->size;
  return BUNDLE_ERROR_NONE;
}

int dlog_print(log_priority /*prio*/, const char * /*tag*/, const char * /*fmt*/, ...) {
  return 0;
}

int app_get_id(char **id) {
  ++questionsForTheId;
  if (benchmarks::null_platform::whileIdIsAsked != nullptr) {
    benchmarks::null_platform::whileIdIsAsked();
  }
  const std::size_t size = std::strlen(kAppId) + 1;
  *id = static_cast<char *>(std::malloc(size));
  std::memcpy(*id, kAppId, size);
  return APP_ERROR_NONE;
}

int app_info_create(const char * /*appId*/, app_info_h *info) {
  *info = reinterpret_cast<app_info_h>(&object);
  return APP_MANAGER_ERROR_NONE;
}

int app_info_foreach_metadata(app_info_h /*info*/, app_info_metadata_cb callback, void *userData) {
  callback(NORIX_SDK_VERSION_METADATA_KEY, "1.0-beta", userData);
  return APP_MANAGER_ERROR_NONE;
}

int app_info_destroy(app_info_h /*info*/) {
  return APP_MANAGER_ERROR_NONE;
}

int rpc_port_stub_create(rpc_port_stub_h *h, const char * /*portName*/) {
  *h = &object;
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_stub_destroy(rpc_port_stub_h /*h*/) {
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_stub_listen(rpc_port_stub_h /*h*/) {
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_stub_add_connected_event_cb(rpc_port_stub_h /*h*/,
                                         rpc_port_stub_connected_event_cb callback,
                                         void *userData) {
  connected = callback;
  stubData = userData;
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_stub_add_disconnected_event_cb(rpc_port_stub_h /*h*/,
                                            rpc_port_stub_disconnected_event_cb /*callback*/,
                                            void * /*userData*/) {
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_stub_add_received_event_cb(rpc_port_stub_h /*h*/,
                                        rpc_port_stub_received_event_cb callback,
                                        void * /*userData*/) {
  received = callback;
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_stub_get_port(rpc_port_stub_h /*h*/, rpc_port_port_type_e /*type*/,
                           const char * /*instance*/, rpc_port_h *port) {
  *port = &object;
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_parcel_create(rpc_port_parcel_h *h) {
  *h = &object;
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_parcel_create_from_port(rpc_port_parcel_h *h, rpc_port_h /*port*/) {
  *h = &object;
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_parcel_destroy(rpc_port_parcel_h /*h*/) {
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_parcel_send(rpc_port_parcel_h /*h*/, rpc_port_h /*port*/) {
  ++parcels;
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_parcel_write_int32(rpc_port_parcel_h /*h*/, int /*i*/) {
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_parcel_write_bool(rpc_port_parcel_h /*h*/, bool /*b*/) {
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_parcel_write_string(rpc_port_parcel_h /*h*/, const char * /*str*/) {
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_parcel_write_bundle(rpc_port_parcel_h /*h*/, bundle * /*b*/) {
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_parcel_read_int32(rpc_port_parcel_h /*h*/, int *i) {
  *i = methodId;
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_parcel_read_bool(rpc_port_parcel_h /*h*/, bool *b) {
  *b = false;
  return RPC_PORT_ERROR_NONE;
}

int rpc_port_parcel_read_bundle(rpc_port_parcel_h /*h*/, bundle **b) {
  *b = theBundle();
  return RPC_PORT_ERROR_NONE;
}

Ecore_Timer *ecore_timer_add(double in, Ecore_Task_Cb function, const void *data) {
  timer = {function, data, in};
  return reinterpret_cast<Ecore_Timer *>(&timer);
}

void *ecore_timer_del(Ecore_Timer * /*timer*/) {
  return nullptr;
}
