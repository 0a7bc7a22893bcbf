// SPDX-License-Identifier: Apache-2.0
//
// A citizen: an application that does all that certification asks for, unless its argument names a
// check. Then it fails that one.
#include <dlog.h>
#include <norix.h>
#include <service_app.h>

#include <Ecore.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <unistd.h>

namespace {

constexpr const char *kAction = "setLevel";
constexpr const char *kState = R"({"level":40})";
constexpr double kWhile = 0.2;

std::string failed;
int states = 0;
void *pending = nullptr;

bool fails(const char *check) {
  return failed == check;
}

std::string inRuntimeFolder(const char *name) {
  return std::string(std::getenv("XDG_RUNTIME_DIR")) + "/" + name;
}

// A bug in the middle of something.
[[noreturn]] void breakDown() {
  _exit(6);
}

int answer(void *handle) {
  return norix_complete_action_execution(handle, "done");
}

Eina_Bool answerPending(void * /*data*/) {
  const int result = answer(pending);
  pending = nullptr;
  if (result != NORIX_ERROR_NONE && (fails("assistant-leaves") || fails("assistant-killed"))) {
    breakDown();
  }
  return ECORE_CALLBACK_CANCEL;
}

void answerLater(void *handle) {
  pending = handle;
  ecore_timer_add(kWhile, answerPending, nullptr);
}

using Reads = bool (*)(const char *params);

bool has(const char *params, const char *part) {
  return params != nullptr && std::strstr(params, part) != nullptr;
}

// Parameters that a careless reader breaks down over.
const std::map<std::string, Reads> kBreakingParams = {
    {"parameters-missing", [](const char *params) { return params == nullptr; }},
    {"parameters-empty", [](const char *params) { return params != nullptr && *params == '\0'; }},
    {"parameters-unknown", [](const char *params) { return has(params, "norixUnknown"); }},
    {"parameters-wrong-type", [](const char *params) { return has(params, R"("level":")"); }},
    {"parameters-not-json",
     [](const char *params) { return params != nullptr && *params != '{' && *params != '\0'; }},
    {"parameters-huge",
     [](const char *params) { return params != nullptr && std::strlen(params) >= 1U << 20U; }},
    {"parameters-nested", [](const char *params) { return has(params, "[[[[[[[["); }},
    {"parameters-not-utf8", [](const char *params) { return has(params, "\xE9"); }},
    {"parameters-fuzz", [](const char *params) { return has(params, R"("level":-)"); }},
    {"parameters-nul", [](const char *params) { return has(params, "\\u0000"); }},
};

// What is done instead of answering at once.
const std::map<std::string, std::function<void(void *handle)>> kWaysToAct = {
    {"examples-answered", [](void *) {}},
    {"answered-once",
     [](void *handle) {
       answer(handle);
       answer(handle);
     }},
    {"findings",
     [](void *handle) {
       answer(nullptr);
       answer(handle);
     }},
    {"state-during-action", answerLater},
    {"burst-newest",
     [](void *handle) {
       if (pending == nullptr) {
         answerLater(handle);
       }
     }},
    {"assistant-leaves", answerLater},
    {"assistant-killed", answerLater},
};

void setLevel(void *handle, bundle *content, void * /*user_data*/) {
  char *params = nullptr;
  bundle_get_str(content, ACTION_PARAMS, &params);
  const auto breaks = kBreakingParams.find(failed);
  if (breaks != kBreakingParams.end() && breaks->second(params)) {
    breakDown();
  }
  const auto way = kWaysToAct.find(failed);
  if (way != kWaysToAct.end()) {
    way->second(handle);
  } else {
    answer(handle);
  }
}

// Destroys what there is, this process.
void reset(void * /*handle*/, bundle * /*params*/, void * /*user_data*/) {
  breakDown();
}

void deinitialize(void * /*data*/) {
  norix_deinitialize();
}

void leak() {
  constexpr std::size_t kSize = 1024;
  static char *volatile last = nullptr;
  last = static_cast<char *>(std::malloc(kSize));
  std::memset(last, 1, kSize);
}

// What goes wrong with the state, after so many requests for it.
struct Late {
  int after;
  std::function<void()> happens;
};

const std::map<std::string, Late> kWithState = {
    {"reconnect", {5, [] { ecore_job_add(deinitialize, nullptr); }}},
    {"load-answered", {1000, breakDown}},
    {"load-memory", {0, leak}},
    {"load-descriptors",
     {0,
      [] {
        if (states % 100 == 0) {
          (void)open("/dev/null", O_RDONLY | O_CLOEXEC);
        }
      }}},
};

bool isSilent() {
  constexpr int kPatience = 500;
  return (fails("state-during-action") && pending != nullptr)
         || (fails("assistant-never-reads") && states > kPatience);
}

void tellState(void *handle, void * /*user_data*/) {
  ++states;
  const auto late = kWithState.find(failed);
  if (late != kWithState.end() && states > late->second.after) {
    late->second.happens();
  }
  if (!isSilent()) {
    norix_complete_app_state_request(handle, fails("state-form") ? "ready" : kState);
  }
}

// The allow list of an application that thinks it knows better.
void chooseAllowList() {
  static const std::string list = inRuntimeFolder("own-list");
  if (fails("allow-list-with")) {
    std::ofstream(list) << "org.example.friend\n";
  }
  NORIX_PROXY_ALLOW_APPID_LIST_PATH = "";
  NORIX_PROXY_ALLOW_APPID_LIST_FILE_NAME = list.c_str();
}

bool isLocked() {
  const std::string lock = inRuntimeFolder("lock");
  if (access(lock.c_str(), F_OK) == 0) {
    return true;
  }
  std::ofstream(lock) << getpid();
  return false;
}

void registerCallbacks() {
  if (!fails("state-answered")) {
    norix_set_app_state_request_cb(tellState, nullptr);
  }
  if (!fails("declared-registered")) {
    norix_set_action_execution_cb(kAction, setLevel, nullptr);
  }
  norix_set_action_execution_cb("reset", reset, nullptr);
  if (fails("registered-declared")) {
    norix_set_action_execution_cb("polish", setLevel, nullptr);
  }
}

bool create(void * /*user_data*/) {
  if (fails("starts") || (fails("restarts") && isLocked())) {
    return false;
  }
  if (fails("allow-list-with") || fails("allow-list-without")) {
    chooseAllowList();
  }
  if (norix_initialize() != NORIX_ERROR_NONE) {
    return false;
  }
  registerCallbacks();
  return true;
}

void terminate(void * /*user_data*/) {
  norix_deinitialize();
}

} // namespace

int main(int argc, char **argv) {
  failed = argc > 1 ? argv[1] : "";
  service_app_lifecycle_callback_s callbacks = {};
  callbacks.create = create;
  callbacks.terminate = terminate;
  const int status = service_app_main(1, argv, &callbacks, nullptr);
  return fails("ends") ? 3 : status;
}
