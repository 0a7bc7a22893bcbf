// SPDX-License-Identifier: Apache-2.0
//
// An application that is launched by others. It appends what it sees to the file $LAUNCH_LOG,
// listens on the port "message", and does what a request's operation says: "reply", "ignore",
// "exit".
#include <app_control.h>
#include <cstdio>
#include <cstdlib>
#include <rpc-port.h>
#include <service_app.h>
#include <string>
#include <unistd.h>

namespace {

void say(const std::string &line) {
  std::FILE *log = std::fopen(std::getenv("LAUNCH_LOG"), "a");
  if (log != nullptr) {
    std::fprintf(log, "%s\n", line.c_str());
    std::fclose(log);
  }
}

// What a getter gives, or "-".
template <typename Getter>
std::string taken(Getter get) {
  char *text = nullptr;
  if (get(&text) != APP_CONTROL_ERROR_NONE || text == nullptr) {
    return "-";
  }
  std::string copy = text;
  std::free(text);
  return copy;
}

bool create(void * /*data*/) {
  say("create " + std::to_string(getpid()));
  static rpc_port_stub_h stub = nullptr;
  rpc_port_stub_create(&stub, "message");
  rpc_port_stub_listen(stub);
  return true;
}

void reply(app_control_h request) {
  app_control_h answer = nullptr;
  app_control_create(&answer);
  app_control_add_extra_data(answer, "answer", "42");
  app_control_reply_to_launch_request(answer, request, APP_CONTROL_RESULT_SUCCEEDED);
  app_control_destroy(answer);
}

void control(app_control_h request, void * /*data*/) {
  const auto operation =
      taken([request](char **text) { return app_control_get_operation(request, text); });
  const auto caller =
      taken([request](char **text) { return app_control_get_caller(request, text); });
  const auto song =
      taken([request](char **text) { return app_control_get_extra_data(request, "song", text); });
  say("control " + operation + " " + caller + " " + song);
  if (operation == "reply") {
    reply(request);
  } else if (operation == "exit") {
    service_app_exit();
  }
}

} // namespace

int main(int argc, char **argv) {
  service_app_lifecycle_callback_s callbacks = {create, nullptr, control};
  return service_app_main(argc, argv, &callbacks, nullptr);
}
