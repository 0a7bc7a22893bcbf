/* SPDX-License-Identifier: Apache-2.0 */
#include <bundle.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static int failures;

static void check(int holds, const char *what) {
  if (!holds) {
    fprintf(stderr, "failed: %s\n", what);
    ++failures;
  }
}

#define CHECK(condition) check((condition), #condition)

static void add_all(bundle *b) {
  const char *texts[2] = {"one", NULL};

  CHECK(bundle_add_str(b, "text", "x") == BUNDLE_ERROR_NONE);
  CHECK(bundle_add_byte(b, "bytes", "y", 1) == BUNDLE_ERROR_NONE);
  CHECK(bundle_add_str_array(b, "texts", texts, 2) == BUNDLE_ERROR_NONE);
  CHECK(bundle_add_byte_array(b, "parts", 2) == BUNDLE_ERROR_NONE);
  CHECK(bundle_set_byte_array_element(b, "parts", 1, "z", 1) == BUNDLE_ERROR_NONE);
}

static void get_all(bundle *b) {
  char *text = NULL;
  void *bytes = NULL;
  size_t size = 0;
  int length = 0;
  void **parts = NULL;
  unsigned int count = 0;
  unsigned int *sizes = NULL;

  CHECK(bundle_get_str(b, "text", &text) == BUNDLE_ERROR_NONE && strcmp(text, "x") == 0);
  CHECK(strcmp(bundle_get_val(b, "text"), "x") == 0);
  CHECK(bundle_get_byte(b, "bytes", &bytes, &size) == BUNDLE_ERROR_NONE && size == 1);
  CHECK(bundle_get_str_array(b, "texts", &length) != NULL && length == 2);
  CHECK(bundle_get_byte_array(b, "parts", &parts, &count, &sizes) == BUNDLE_ERROR_NONE);
  CHECK(count == 2 && sizes[0] == 0 && sizes[1] == 1);
  CHECK(bundle_get_type(b, "text") == BUNDLE_TYPE_STR);
  CHECK(bundle_get_count(b) == 4);
}

static void visit(const char *key, const int type, const bundle_keyval_t *kv, void *user_data) {
  bundle_keyval_t *value = (bundle_keyval_t *)kv;
  void *basic = NULL;
  void **array = NULL;
  size_t size = 0;
  size_t *sizes = NULL;
  unsigned int length = 0;

  CHECK(key[0] != '\0' && bundle_keyval_get_type(value) == type);
  if (bundle_keyval_type_is_array(value)) {
    CHECK(bundle_keyval_get_array_val(value, &array, &length, &sizes) == BUNDLE_ERROR_NONE);
  } else {
    CHECK(bundle_keyval_get_basic_val(value, &basic, &size) == BUNDLE_ERROR_NONE);
  }
  ++*(int *)user_data;
}

static void encode_and_decode(bundle *b) {
  bundle_raw *raw = NULL;
  int length = 0;
  bundle *decoded = NULL;

  CHECK(bundle_encode(b, &raw, &length) == BUNDLE_ERROR_NONE);
  decoded = bundle_decode(raw, length);
  get_all(decoded);
  CHECK(bundle_free(decoded) == BUNDLE_ERROR_NONE);
  free(raw);
}

int main(void) {
  int visits = 0;
  bundle *b = bundle_create();
  bundle *copy = NULL;

  add_all(b);
  get_all(b);
  bundle_foreach(b, visit, &visits);
  CHECK(visits == 4);
  encode_and_decode(b);
  copy = bundle_dup(b);
  get_all(copy);
  CHECK(bundle_del(copy, "text") == BUNDLE_ERROR_NONE && bundle_get_count(copy) == 3);
  CHECK(bundle_free(copy) == BUNDLE_ERROR_NONE);
  CHECK(bundle_free(b) == BUNDLE_ERROR_NONE);
  return failures != 0;
}
