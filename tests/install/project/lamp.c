/* SPDX-License-Identifier: Apache-2.0 */
#include <norix.h>
#include <service_app.h>
#include <stddef.h>

static void on_state(void *request, void *user_data) {
  (void)user_data;
  norix_complete_app_state_request(request, "lit, in C");
}

static bool on_create(void *user_data) {
  (void)user_data;
  return norix_initialize() == NORIX_ERROR_NONE
         && norix_set_app_state_request_cb(on_state, NULL) == NORIX_ERROR_NONE;
}

int main(int argc, char **argv) {
  service_app_lifecycle_callback_s callbacks = {.create = on_create};
  return service_app_main(argc, argv, &callbacks, NULL);
}
