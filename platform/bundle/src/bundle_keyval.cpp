// SPDX-License-Identifier: Apache-2.0
#include <bundle.h>

#include "entry.h"
#include "result.h"

using platform::bundles::finish;
using platform::bundles::give;

int bundle_keyval_get_type(bundle_keyval_t *kv) {
  finish(kv != nullptr ? BUNDLE_ERROR_NONE : BUNDLE_ERROR_INVALID_PARAMETER);
  return kv != nullptr ? kv->type : -1;
}

int bundle_keyval_type_is_array(bundle_keyval_t *kv) {
  finish(kv != nullptr ? BUNDLE_ERROR_NONE : BUNDLE_ERROR_INVALID_PARAMETER);
  return kv != nullptr ? static_cast<int>(kv->isArray()) : -1;
}

int bundle_keyval_get_basic_val(bundle_keyval_t *kv, void **val, size_t *size) {
  const bool valid = kv != nullptr && val != nullptr && !kv->isArray();
  give(val, valid ? kv->value() : nullptr);
  give(size, valid ? kv->size : 0);
  return finish(valid ? BUNDLE_ERROR_NONE : BUNDLE_ERROR_INVALID_PARAMETER);
}

int bundle_keyval_get_array_val(bundle_keyval_t *kv, void ***array_val, unsigned int *array_len,
                                size_t **array_item_size) {
  const bool valid = kv != nullptr && array_val != nullptr && kv->isArray();
  give(array_val, valid ? kv->slots() : nullptr);
  give(array_len, valid ? kv->size : 0);
  give(array_item_size, valid ? kv->slotSizes() : nullptr);
  return finish(valid ? BUNDLE_ERROR_NONE : BUNDLE_ERROR_INVALID_PARAMETER);
}
