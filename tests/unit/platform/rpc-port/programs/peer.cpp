// SPDX-License-Identifier: Apache-2.0
// The other side of the tests that need one in a process of its own.
#include "support/Ends.h"
#include "support/Program.h"

#include <Ecore.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

void sayReady() {
  (void)std::puts("ready");
  (void)std::fflush(stdout);
}

void runStub() {
  rpc_test::StubEnd stub;
  stub.onReceived = [&stub](rpc_port_h port) {
    const std::string text = rpc_test::takeText(port);
    if (text == "bye") {
      return -1;
    }
    if (text == "exit") {
      std::_Exit(0);
    }
    rpc_test::sendText(port, text);
    rpc_test::sendText(stub.port(RPC_PORT_PORT_CALLBACK), text);
    return 0;
  };
  if (stub.listen() != RPC_PORT_ERROR_NONE) {
    std::abort();
  }
  sayReady();
  ecore_main_loop_begin();
}

void runProxy() {
  rpc_test::ProxyEnd proxy;
  proxy.onConnected = [&proxy] { rpc_test::sendText(proxy.port(RPC_PORT_PORT_MAIN), "hello"); };
  sayReady();
  proxy.connect();
  ecore_main_loop_begin();
}

} // namespace

int main(int argc, char **argv) {
  setenv("AUL_APPID", rpc_test::Program::kAppId, 1);
  ecore_app_no_system_modules();
  ecore_init();
  if (argc == 2 && std::strcmp(argv[1], "stub") == 0) {
    runStub();
  } else if (argc == 2 && std::strcmp(argv[1], "proxy") == 0) {
    runProxy();
  }
  ecore_shutdown();
  return 0;
}
