/* SPDX-License-Identifier: Apache-2.0 */
/*
 * An application in C that includes every header and calls every function. It prints the result of
 * what its first argument asks for, and the answer: "untouched" where an output was left alone.
 */
#include <app.h>
#include <app_common.h>
#include <app_control.h>
#include <app_info.h>
#include <app_manager.h>
#include <service_app.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static char untouched[] = "untouched";

static void print_and_free(int result, char *text) {
  printf("%d %s\n", result, text);
  if (text != untouched) {
    free(text);
  }
}

static void print_text(int (*get)(char **)) {
  char *text = untouched;
  int result = get(&text);
  print_and_free(result, text);
}

static void print_path(char *(*get)(void)) {
  char *path = get();
  printf("%d %s\n", get_last_result(), path != NULL ? path : "null");
  free(path);
}

static void print_member(app_info_h info, int (*get)(app_info_h, char **)) {
  char *text = untouched;
  int result = get(info, &text);
  print_and_free(result, text);
}

static bool print_metadata(const char *key, const char *value, void *user_data) {
  (void)user_data;
  printf("%s=%s\n", key, value);
  return true;
}

static void print_info(const char *app_id) {
  app_info_h info = NULL;
  int result = app_info_create(app_id, &info);
  printf("%d\n", result);
  if (result != APP_MANAGER_ERROR_NONE) {
    return;
  }
  print_member(info, app_info_get_app_id);
  print_member(info, app_info_get_exec);
  print_member(info, app_info_get_label);
  print_member(info, app_info_get_package);
  print_member(info, app_info_get_type);
  app_info_foreach_metadata(info, print_metadata, NULL);
  printf("%d\n", app_info_destroy(info));
}

static bool end_ui(void *user_data) {
  (void)user_data;
  ui_app_exit();
  return true;
}

static bool end_service(void *user_data) {
  (void)user_data;
  service_app_exit();
  return true;
}

static int run(const char *what, int argc, char **argv) {
  ui_app_lifecycle_callback_s ui = {.create = end_ui};
  service_app_lifecycle_callback_s service = {.create = end_service};

  if (strcmp(what, "id") == 0) {
    print_text(app_get_id);
  } else if (strcmp(what, "name") == 0) {
    print_text(app_get_name);
  } else if (strcmp(what, "version") == 0) {
    print_text(app_get_version);
  } else if (strcmp(what, "resource-path") == 0) {
    print_path(app_get_resource_path);
  } else if (strcmp(what, "data-path") == 0) {
    print_path(app_get_data_path);
  } else if (strcmp(what, "ui") == 0) {
    printf("%d\n", ui_app_main(argc, argv, &ui, NULL));
  } else if (strcmp(what, "service") == 0) {
    printf("%d\n", service_app_main(argc, argv, &service, NULL));
  } else {
    print_info(what);
  }
  return EXIT_SUCCESS;
}

int main(int argc, char **argv) {
  return argc == 2 ? run(argv[1], argc, argv) : EXIT_FAILURE;
}
