// SPDX-License-Identifier: Apache-2.0
//
// An application that makes one mistake, the one that its argument names. Apart from that it
// answers the state and the action "act".
#include <dlog.h>
#include <norix.h>
#include <service_app.h>

#include <Ecore.h>

#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

constexpr const char *kAction = "act";
constexpr unsigned kTooLong = 1300000;

using ActionCallback = std::function<void(void *handle, bundle *params)>;

std::string mistake;
std::string argument;
void *keptHandle = nullptr;
bundle *keptParams = nullptr;

void later(double seconds, Ecore_Task_Cb task) {
  ecore_timer_add(seconds, task, nullptr);
}

void answer(void *handle) {
  norix_complete_action_execution(handle, "done");
}

void crash() {
  volatile int *nowhere = nullptr;
  *nowhere = 1;
}

// The numbers that a library may have taken for itself.
constexpr int kFirstOther = 100;
constexpr int kLastOther = 400;

void closeDescriptors() {
  for (int descriptor = kFirstOther; descriptor < kLastOther; ++descriptor) {
    close(descriptor);
  }
}

void openFileInTheirPlace() {
  const int file = open(argument.c_str(), O_WRONLY | O_CREAT, 0600);
  for (int descriptor = kFirstOther; descriptor < kLastOther; ++descriptor) {
    dup2(file, descriptor);
  }
}

void forkChild() {
  const pid_t child = fork();
  if (child == 0) {
    exit(0);
  }
  waitpid(child, nullptr, 0);
}

void logFromThreads() {
  constexpr int kThreads = 8;
  constexpr int kLines = 500;
  std::vector<std::thread> threads;
  for (int number = 0; number < kThreads; ++number) {
    threads.emplace_back([number] {
      for (int line = 0; line < kLines; ++line) {
        dlog_print(DLOG_INFO, "THREADS", "thread %d line %d", number, line);
      }
    });
  }
  for (std::thread &thread : threads) {
    thread.join();
  }
}

const std::map<std::string, std::function<void()>> kUnusualThings = {
    {"forks", forkChild},
    {"runs-a-program", [] { (void)!std::system("exit 0"); }},
    {"closes-descriptors", closeDescriptors},
    {"replaces-descriptors", openFileInTheirPlace},
    {"logs-from-threads", logFromThreads},
};

const std::map<std::string, ActionCallback> kActionMistakes = {
    {"never-answers", [](void *, bundle *) {}},
    {"answers-twice",
     [](void *handle, bundle *) {
       answer(handle);
       answer(handle);
     }},
    {"answers-too-late",
     [](void *handle, bundle *) {
       keptHandle = handle;
       later(0.6, [](void *) -> Eina_Bool {
         answer(keptHandle);
         return ECORE_CALLBACK_CANCEL;
       });
     }},
    {"answers-replaced",
     [](void *handle, bundle *) {
       if (keptHandle != nullptr) {
         answer(keptHandle);
       }
       keptHandle = handle;
     }},
    {"answers-other-kind",
     [](void *handle, bundle *) { norix_complete_app_state_request(handle, "done"); }},
    {"answers-null", [](void *, bundle *) { answer(nullptr); }},
    {"answers-in-a-thread",
     [](void *handle, bundle *) { std::thread([handle] { answer(handle); }).join(); }},
    {"frees-the-bundle",
     [](void *handle, bundle *params) {
       bundle_free(params);
       answer(handle);
     }},
    {"reads-the-bundle-later",
     [](void *handle, bundle *params) {
       answer(handle);
       keptParams = params;
       later(0.05, [](void *) -> Eina_Bool {
         char *text = nullptr;
         bundle_get_str(keptParams, ACTION_PARAMS, &text);
         return ECORE_CALLBACK_CANCEL;
       });
     }},
    {"holds-the-loop",
     [](void *handle, bundle *) {
       usleep(kTooLong);
       answer(handle);
     }},
    {"throws", [](void *, bundle *) { throw std::out_of_range("no such song"); }},
    {"throws-to-the-end", [](void *, bundle *) { throw std::runtime_error("no such album"); }},
    {"crashes", [](void *, bundle *) { crash(); }},
    {"answers-latin-1",
     [](void *handle, bundle *) { norix_complete_action_execution(handle, "Beyonc\xe9"); }},
    {"deinitializes-inside", [](void *, bundle *) { norix_deinitialize(); }},
};

void act(void *handle, bundle *params, void * /*user_data*/) {
  const auto found = kActionMistakes.find(mistake);
  if (found != kActionMistakes.end()) {
    found->second(handle, params);
    return;
  }
  const auto unusual = kUnusualThings.find(mistake);
  if (unusual != kUnusualThings.end()) {
    unusual->second();
  }
  answer(handle);
}

Eina_Bool registerAction(void * /*data*/) {
  norix_set_action_execution_cb(kAction, act, nullptr);
  return ECORE_CALLBACK_CANCEL;
}

void tellState(void *handle, void * /*user_data*/) {
  norix_complete_app_state_request(handle, "ready");
  if (mistake == "registers-late") {
    later(0.04, registerAction);
  }
}

// What the application reads in the place of the installed list.
void replaceAllowList() {
  NORIX_PROXY_ALLOW_APPID_LIST_PATH = "";
  NORIX_PROXY_ALLOW_APPID_LIST_FILE_NAME = argument.c_str();
}

bool create(void * /*user_data*/) {
  if (mistake == "replaces-the-allow-list") {
    replaceAllowList();
  }
  if (mistake == "calls-before-initialize") {
    registerAction(nullptr);
  }
  const bool succeeded = norix_initialize() == NORIX_ERROR_NONE;
  if (!succeeded && mistake != "ignores-initialize") {
    return false;
  }
  norix_set_app_state_request_cb(tellState, nullptr);
  if (mistake != "registers-late") {
    registerAction(nullptr);
  }
  if (mistake == "holds-the-loop-in-a-timer") {
    later(0.05, [](void *) -> Eina_Bool {
      usleep(2 * kTooLong);
      return ECORE_CALLBACK_CANCEL;
    });
  }
  if (mistake == "registers-twice") {
    registerAction(nullptr);
  }
  return true;
}

void terminate(void * /*user_data*/) {
  norix_deinitialize();
}

} // namespace

int main(int argc, char **argv) {
  mistake = argc > 1 ? argv[1] : "";
  argument = argc > 2 ? argv[2] : "";
  service_app_lifecycle_callback_s callbacks = {};
  callbacks.create = create;
  callbacks.terminate = terminate;
  try {
    return service_app_main(1, argv, &callbacks, nullptr);
  } catch (const std::out_of_range &) {
    return 3;
  }
}
