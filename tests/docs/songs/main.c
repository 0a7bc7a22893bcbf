/* SPDX-License-Identifier: Apache-2.0 */
/*
 * An application around the code of docs/threads.md.
 */
#include <norix.h>
#include <service_app.h>
#include <stdbool.h>
#include <stddef.h>

int register_count_songs(void);

static bool on_create(void *user_data) {
  (void)user_data;
  return norix_initialize() == NORIX_ERROR_NONE && register_count_songs() == NORIX_ERROR_NONE;
}

static void on_terminate(void *user_data) {
  (void)user_data;
  norix_deinitialize();
}

int main(int argc, char **argv) {
  service_app_lifecycle_callback_s callbacks = {on_create, on_terminate, NULL};
  return service_app_main(argc, argv, &callbacks, NULL);
}
