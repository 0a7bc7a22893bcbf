/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Calls every function of the library, and reads every constant, from C. Ends with 0 when each gave
 * what the header promises; otherwise says which did not.
 */
#include <norix.h>

#include <Ecore.h>
#include <stdio.h>
#include <string.h>

static int failures = 0;

static void check(int holds, const char *what) {
  if (!holds) {
    fprintf(stderr, "wrong: %s\n", what);
    ++failures;
  }
}

#define CHECK(condition) check(condition, #condition)

static void on_state(void *request, void *user_data) {
  (void)request;
  (void)user_data;
}

static void on_action(void *request, bundle *params, void *user_data) {
  (void)request;
  (void)params;
  (void)user_data;
}

static void call_before_initialising(void) {
  int handle = 50;
  char *name = "untouched";

  CHECK(norix_set_app_state_request_cb(on_state, NULL) == NORIX_ERROR_OPERATION_FAILED);
  CHECK(norix_unset_app_state_request_cb() == NORIX_ERROR_OPERATION_FAILED);
  CHECK(norix_complete_app_state_request(&handle, "x") == NORIX_ERROR_OPERATION_FAILED);
  CHECK(norix_set_action_execution_cb("play", on_action, NULL) == NORIX_ERROR_OPERATION_FAILED);
  CHECK(norix_unset_action_execution_cb("play") == NORIX_ERROR_OPERATION_FAILED);
  CHECK(norix_complete_action_execution(&handle, "x") == NORIX_ERROR_OPERATION_FAILED);
  CHECK(norix_set_action_execution_cb(NULL, on_action, NULL) == NORIX_ERROR_INVALID_PARAMETER);
  CHECK(norix_get_action_name(NULL, &name) == NORIX_ERROR_INVALID_PARAMETER);
  CHECK(name == NULL);
  CHECK(norix_deinitialize() == NORIX_ERROR_NONE);
}

static void call_while_initialised(void) {
  int handle = 50; /* The number of no request. */

  CHECK(norix_initialize() == NORIX_ERROR_NONE);
  CHECK(norix_set_app_state_request_cb(on_state, NULL) == NORIX_ERROR_NONE);
  CHECK(norix_complete_app_state_request(NULL, "x") == NORIX_ERROR_INVALID_PARAMETER);
  CHECK(norix_complete_app_state_request(&handle, "x") == NORIX_ERROR_NONE);
  CHECK(norix_unset_app_state_request_cb() == NORIX_ERROR_NONE);
  CHECK(norix_set_action_execution_cb("play", on_action, NULL) == NORIX_ERROR_NONE);
  CHECK(norix_complete_action_execution(&handle, "x") == NORIX_ERROR_NONE);
  CHECK(norix_unset_action_execution_cb("play") == NORIX_ERROR_NONE);
  CHECK(norix_get_action_name(&handle, NULL) == NORIX_ERROR_INVALID_PARAMETER);
  CHECK(norix_deinitialize() == NORIX_ERROR_NONE);
}

static void check_constants(void) {
  CHECK(strcmp(ACTION_ID, "actionId") == 0);
  CHECK(strcmp(ACTION_TYPE, "actionType") == 0);
  CHECK(strcmp(ACTION_PARAMS, "actionParams") == 0);
  CHECK(strcmp(REQUEST_ID, "requestId") == 0);
  CHECK(strcmp(ACTION_GET_APP_STATE, "getAppContext") == 0);
  CHECK(strcmp(KEY_ACTION_RESULT, "result") == 0);
  CHECK(strcmp(KEY_APP_STATE, "appContext") == 0);
  CHECK(strcmp(KEY_STATUS_CODE, "status_code") == 0);
  CHECK(strcmp(KEY_STATUS_MESSAGE, "status_msg") == 0);
  CHECK(strcmp(ACTION_EXECUTION_SUCCESS, "ACTION_EXECUTION_SUCCESS") == 0);
  CHECK(strcmp(ACTION_EXECUTION_FAILURE, "ACTION_EXECUTION_FAILURE") == 0);
  CHECK(strcmp(NORIX_PROXY_APP_NAME, "com.valtren.tizen.norix") == 0);
  CHECK(strcmp(NORIX_PROXY_ALLOW_APPID_LIST_PATH, "/usr/share/norix/") == 0);
  CHECK(strcmp(NORIX_PROXY_ALLOW_APPID_LIST_FILE_NAME, "allow_list.dat") == 0);
  CHECK(COMPLETE_CHECKING_TIME == 0.1);
  CHECK(COMPLETE_WAITING_MAX_COUNT == 300.0);
  CHECK(ZERO_LENGTH == 0);
}

static void check_results(void) {
  CHECK(NORIX_ERROR_NONE == 0);
  CHECK(NORIX_ERROR_OUT_OF_MEMORY == -12);
  CHECK(NORIX_ERROR_INVALID_PARAMETER == -22);
  CHECK(NORIX_ERROR_NOT_SUPPORTED == -1073741822);
  CHECK(NORIX_ERROR_OPERATION_FAILED == -1073741825);
}

int main(void) {
  ecore_app_no_system_modules();
  if (ecore_init() == 0) {
    return 1;
  }
  call_before_initialising();
  call_while_initialised();
  check_constants();
  check_results();
  ecore_shutdown();
  return failures == 0 ? 0 : 1;
}
