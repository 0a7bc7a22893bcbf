/* SPDX-License-Identifier: Apache-2.0 */
/* The headers as C99 sees them: a program that calls every function of theirs once. */
#include <rpc-port-parcel.h>
#include <rpc-port.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static int failures = 0;

#define EXPECT(condition)                                                                          \
  do {                                                                                             \
    if (!(condition)) {                                                                            \
      fprintf(stderr, "%s:%d: %s does not hold\n", __FILE__, __LINE__, #condition);                \
      ++failures;                                                                                  \
    }                                                                                              \
  } while (0)

static void onEvent(const char *other, const char *name, void *data) {
  (void)other;
  (void)name;
  (void)data;
}

static void onConnected(const char *receiver, const char *name, rpc_port_h port, void *data) {
  (void)receiver;
  (void)name;
  (void)port;
  (void)data;
}

static int onReceived(const char *sender, const char *instance, rpc_port_h port, void *data) {
  (void)sender;
  (void)instance;
  (void)port;
  (void)data;
  return 0;
}

static void writePair(rpc_port_parcel_h h, void *data) {
  const int *pair = data;
  EXPECT(rpc_port_parcel_write_int32(h, pair[0]) == RPC_PORT_ERROR_NONE);
  EXPECT(rpc_port_parcel_write_int32(h, pair[1]) == RPC_PORT_ERROR_NONE);
}

static void readPair(rpc_port_parcel_h h, void *data) {
  int *pair = data;
  EXPECT(rpc_port_parcel_read_int32(h, &pair[0]) == RPC_PORT_ERROR_NONE);
  EXPECT(rpc_port_parcel_read_int32(h, &pair[1]) == RPC_PORT_ERROR_NONE);
}

static void useStub(void) {
  rpc_port_stub_h stub = NULL;
  rpc_port_h port = NULL;
  EXPECT(rpc_port_stub_create(&stub, "port") == RPC_PORT_ERROR_NONE);
  EXPECT(rpc_port_stub_add_connected_event_cb(stub, onEvent, NULL) == RPC_PORT_ERROR_NONE);
  EXPECT(rpc_port_stub_add_disconnected_event_cb(stub, onEvent, NULL) == RPC_PORT_ERROR_NONE);
  EXPECT(rpc_port_stub_add_received_event_cb(stub, onReceived, NULL) == RPC_PORT_ERROR_NONE);
  EXPECT(rpc_port_stub_add_privilege(stub, "privilege") == RPC_PORT_ERROR_NONE);
  EXPECT(rpc_port_stub_set_trusted(stub, true) == RPC_PORT_ERROR_NONE);
  EXPECT(rpc_port_stub_listen(stub) == RPC_PORT_ERROR_NONE);
  EXPECT(rpc_port_stub_get_port(stub, RPC_PORT_PORT_MAIN, "none", &port)
         == RPC_PORT_ERROR_IO_ERROR);
  EXPECT(rpc_port_stub_get_port(stub, (rpc_port_port_type_e)2, "none", &port)
         == RPC_PORT_ERROR_INVALID_PARAMETER);
  EXPECT(rpc_port_stub_destroy(stub) == RPC_PORT_ERROR_NONE);
}

static void useProxy(void) {
  rpc_port_proxy_h proxy = NULL;
  rpc_port_h port = NULL;
  EXPECT(rpc_port_proxy_create(&proxy) == RPC_PORT_ERROR_NONE);
  EXPECT(rpc_port_proxy_add_connected_event_cb(proxy, onConnected, NULL) == RPC_PORT_ERROR_NONE);
  EXPECT(rpc_port_proxy_add_disconnected_event_cb(proxy, onEvent, NULL) == RPC_PORT_ERROR_NONE);
  EXPECT(rpc_port_proxy_add_rejected_event_cb(proxy, onEvent, NULL) == RPC_PORT_ERROR_NONE);
  EXPECT(rpc_port_proxy_add_received_event_cb(proxy, onEvent, NULL) == RPC_PORT_ERROR_NONE);
  EXPECT(rpc_port_proxy_connect(proxy, "org.example.c", "nobody") == RPC_PORT_ERROR_NONE);
  EXPECT(rpc_port_proxy_connect_sync(proxy, "org.example.c", "nobody") == RPC_PORT_ERROR_IO_ERROR);
  EXPECT(rpc_port_proxy_get_port(proxy, RPC_PORT_PORT_CALLBACK, &port) == RPC_PORT_ERROR_IO_ERROR);
  EXPECT(rpc_port_proxy_destroy(proxy) == RPC_PORT_ERROR_NONE);
}

static void usePort(void) {
  int noPort = 0;
  char byte = 0;
  const char *paths[] = {"/path"};
  EXPECT(rpc_port_read(&noPort, &byte, 1) == RPC_PORT_ERROR_IO_ERROR);
  EXPECT(rpc_port_write(&noPort, &byte, 1) == RPC_PORT_ERROR_IO_ERROR);
  EXPECT(rpc_port_disconnect(&noPort) == RPC_PORT_ERROR_IO_ERROR);
  EXPECT(rpc_port_set_private_sharing(&noPort, paths[0]) == RPC_PORT_ERROR_IO_ERROR);
  EXPECT(rpc_port_set_private_sharing_array(&noPort, paths, 1) == RPC_PORT_ERROR_IO_ERROR);
  EXPECT(rpc_port_unset_private_sharing(&noPort) == RPC_PORT_ERROR_IO_ERROR);
}

static void writeParcel(rpc_port_parcel_h parcel) {
  const unsigned char raw[2] = {1, 2};
  int pair[2] = {3, 4};
  rpc_port_parcelable_t type = {writePair, readPair};
  bundle *b = bundle_create();
  EXPECT(rpc_port_parcel_write_byte(parcel, 'b') == RPC_PORT_ERROR_NONE);
  EXPECT(rpc_port_parcel_write_int16(parcel, 16) == RPC_PORT_ERROR_NONE);
  EXPECT(rpc_port_parcel_write_int32(parcel, 32) == RPC_PORT_ERROR_NONE);
  EXPECT(rpc_port_parcel_write_int64(parcel, 64) == RPC_PORT_ERROR_NONE);
  EXPECT(rpc_port_parcel_write_float(parcel, 0.5F) == RPC_PORT_ERROR_NONE);
  EXPECT(rpc_port_parcel_write_double(parcel, 0.25) == RPC_PORT_ERROR_NONE);
  EXPECT(rpc_port_parcel_write_string(parcel, "text") == RPC_PORT_ERROR_NONE);
  EXPECT(rpc_port_parcel_write_bool(parcel, true) == RPC_PORT_ERROR_NONE);
  EXPECT(rpc_port_parcel_write_bundle(parcel, b) == RPC_PORT_ERROR_NONE);
  EXPECT(rpc_port_parcel_write_array_count(parcel, 5) == RPC_PORT_ERROR_NONE);
  EXPECT(rpc_port_parcel_write(parcel, &type, pair) == RPC_PORT_ERROR_NONE);
  EXPECT(rpc_port_parcel_burst_write(parcel, raw, 2) == RPC_PORT_ERROR_NONE);
  bundle_free(b);
}

static void readNumbers(rpc_port_parcel_h parcel) {
  char byte = 0;
  short int16 = 0;
  int int32 = 0;
  long long int64 = 0;
  float single = 0;
  double twice = 0;
  EXPECT(rpc_port_parcel_read_byte(parcel, &byte) == RPC_PORT_ERROR_NONE && byte == 'b');
  EXPECT(rpc_port_parcel_read_int16(parcel, &int16) == RPC_PORT_ERROR_NONE && int16 == 16);
  EXPECT(rpc_port_parcel_read_int32(parcel, &int32) == RPC_PORT_ERROR_NONE && int32 == 32);
  EXPECT(rpc_port_parcel_read_int64(parcel, &int64) == RPC_PORT_ERROR_NONE && int64 == 64);
  EXPECT(rpc_port_parcel_read_float(parcel, &single) == RPC_PORT_ERROR_NONE && single == 0.5F);
  EXPECT(rpc_port_parcel_read_double(parcel, &twice) == RPC_PORT_ERROR_NONE && twice == 0.25);
}

static void readRest(rpc_port_parcel_h parcel) {
  char *text = NULL;
  bool flag = false;
  bundle *b = NULL;
  int count = 0;
  int pair[2] = {0, 0};
  unsigned char raw[2] = {0, 0};
  rpc_port_parcelable_t type = {writePair, readPair};
  EXPECT(rpc_port_parcel_read_string(parcel, &text) == RPC_PORT_ERROR_NONE);
  EXPECT(text && strcmp(text, "text") == 0);
  EXPECT(rpc_port_parcel_read_bool(parcel, &flag) == RPC_PORT_ERROR_NONE && flag);
  EXPECT(rpc_port_parcel_read_bundle(parcel, &b) == RPC_PORT_ERROR_NONE && b);
  EXPECT(rpc_port_parcel_read_array_count(parcel, &count) == RPC_PORT_ERROR_NONE && count == 5);
  EXPECT(rpc_port_parcel_read(parcel, &type, pair) == RPC_PORT_ERROR_NONE && pair[1] == 4);
  EXPECT(rpc_port_parcel_burst_read(parcel, raw, 2) == RPC_PORT_ERROR_NONE && raw[1] == 2);
  free(text);
  bundle_free(b);
}

static void useHeader(rpc_port_parcel_h parcel) {
  rpc_port_parcel_header_h header = NULL;
  char *tag = NULL;
  int number = 0;
  struct timespec *unused = NULL;
  EXPECT(rpc_port_parcel_get_header(parcel, &header) == RPC_PORT_ERROR_NONE);
  EXPECT(rpc_port_parcel_header_set_tag(header, "tag") == RPC_PORT_ERROR_NONE);
  EXPECT(rpc_port_parcel_header_get_tag(header, &tag) == RPC_PORT_ERROR_NONE);
  EXPECT(tag && strcmp(tag, "tag") == 0);
  EXPECT(rpc_port_parcel_header_set_seq_num(header, 6) == RPC_PORT_ERROR_NONE);
  EXPECT(rpc_port_parcel_header_get_seq_num(header, &number) == RPC_PORT_ERROR_NONE);
  EXPECT(number == 6);
  EXPECT(rpc_port_parcel_header_get_timestamp(header, unused) == RPC_PORT_ERROR_INVALID_PARAMETER);
  free(tag);
}

static void useParcel(void) {
  rpc_port_parcel_h written = NULL;
  rpc_port_parcel_h read = NULL;
  void *raw = NULL;
  unsigned int size = 0;
  int noPort = 0;
  EXPECT(rpc_port_parcel_create(&written) == RPC_PORT_ERROR_NONE);
  useHeader(written);
  writeParcel(written);
  EXPECT(rpc_port_parcel_get_raw(written, &raw, &size) == RPC_PORT_ERROR_NONE);
  EXPECT(rpc_port_parcel_create_from_raw(&read, raw, size) == RPC_PORT_ERROR_NONE);
  readNumbers(read);
  readRest(read);
  EXPECT(rpc_port_parcel_send(written, &noPort) == RPC_PORT_ERROR_IO_ERROR);
  EXPECT(rpc_port_parcel_create_from_port(&read, &noPort) == RPC_PORT_ERROR_IO_ERROR);
  EXPECT(rpc_port_parcel_destroy(written) == RPC_PORT_ERROR_NONE);
  EXPECT(rpc_port_parcel_destroy(read) == RPC_PORT_ERROR_NONE);
}

int main(void) {
  useStub();
  useProxy();
  usePort();
  useParcel();
  return failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
