/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Light: the smallest complete application that can be driven by voice. The assistant can ask
 * whether the light is on, and can have it switched on and off.
 */
#include <dlog.h>
#include <norix.h>
#include <service_app.h>
#include <stdbool.h>

#define TAG "LIGHT"

static bool light_is_on = false;

/* Every call can fail. The log is where to find out; what a failure means is the caller's matter.
 */
static bool succeeded(const char *call, int result) {
  if (result != NORIX_ERROR_NONE) {
    dlog_print(DLOG_ERROR, TAG, "%s failed with %d", call, result);
  }
  return result == NORIX_ERROR_NONE;
}

/* The assistant asks for the state. What is in the text is between it and the application. */
static void answer_state(void *request, void *user_data) {
  (void)user_data;
  const char *state = light_is_on ? "{\"light\":\"on\"}" : "{\"light\":\"off\"}";

  succeeded("norix_complete_app_state_request", norix_complete_app_state_request(request, state));
}

/* The assistant asks for an action. Do it, then answer with a text for the user. */
static void switch_on(void *request, bundle *params, void *user_data) {
  (void)params;
  (void)user_data;
  light_is_on = true;

  succeeded("norix_complete_action_execution",
            norix_complete_action_execution(request, "The light is on"));
}

static void switch_off(void *request, bundle *params, void *user_data) {
  (void)params;
  (void)user_data;
  light_is_on = false;

  succeeded("norix_complete_action_execution",
            norix_complete_action_execution(request, "The light is off"));
}

static bool register_callbacks(void) {
  return succeeded("norix_set_app_state_request_cb",
                   norix_set_app_state_request_cb(answer_state, NULL))
         && succeeded("norix_set_action_execution_cb(lightOn)",
                      norix_set_action_execution_cb("lightOn", switch_on, NULL))
         && succeeded("norix_set_action_execution_cb(lightOff)",
                      norix_set_action_execution_cb("lightOff", switch_off, NULL));
}

/* The main loop exists by now, which the library needs. From norix_initialize() on, the assistant
 * can ask: register the callbacks at once. */
static bool create(void *user_data) {
  (void)user_data;
  if (!succeeded("norix_initialize", norix_initialize())) {
    return false;
  }
  if (!register_callbacks()) {
    norix_deinitialize(); /* After false, terminate is not called. */
    return false;
  }
  dlog_print(DLOG_INFO, TAG, "ready: ask for the state, lightOn, lightOff");
  return true;
}

static void terminate(void *user_data) {
  (void)user_data;
  succeeded("norix_deinitialize", norix_deinitialize());
}

int main(int argc, char **argv) {
  service_app_lifecycle_callback_s callbacks = {.create = create, .terminate = terminate};

  return service_app_main(argc, argv, &callbacks, NULL);
}
