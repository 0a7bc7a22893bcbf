// SPDX-License-Identifier: Apache-2.0
//
// The functions of bundle.h: each passes its call on; those that use a bundle say so first.
#include "probe/bundleCalls.h"

#include "probe/Reporter.h"
#include "probe/callbacks.h"
#include "probe/lentBundles.h"
#include "probe/real.h"

#include <cstring>

using norix::probe::EventKind;
using norix::probe::Field;
using norix::probe::isInLibrary;
using norix::probe::kBundleLibrary;
using norix::probe::noteCreated;
using norix::probe::noteUse;
using norix::probe::Record;
using norix::probe::RequestTexts;

NORIX_PROBE_REAL(bundle_create, kBundleLibrary)
NORIX_PROBE_REAL(bundle_free, kBundleLibrary)
NORIX_PROBE_REAL(bundle_dup, kBundleLibrary)
NORIX_PROBE_REAL(bundle_add_str, kBundleLibrary)
NORIX_PROBE_REAL(bundle_add_byte, kBundleLibrary)
NORIX_PROBE_REAL(bundle_add_str_array, kBundleLibrary)
NORIX_PROBE_REAL(bundle_add_byte_array, kBundleLibrary)
NORIX_PROBE_REAL(bundle_set_byte_array_element, kBundleLibrary)
NORIX_PROBE_REAL(bundle_get_str, kBundleLibrary)
NORIX_PROBE_REAL(bundle_get_byte, kBundleLibrary)
NORIX_PROBE_REAL(bundle_get_str_array, kBundleLibrary)
NORIX_PROBE_REAL(bundle_get_byte_array, kBundleLibrary)
NORIX_PROBE_REAL(bundle_get_val, kBundleLibrary)
NORIX_PROBE_REAL(bundle_get_type, kBundleLibrary)
NORIX_PROBE_REAL(bundle_get_count, kBundleLibrary)
NORIX_PROBE_REAL(bundle_del, kBundleLibrary)
NORIX_PROBE_REAL(bundle_foreach, kBundleLibrary)
NORIX_PROBE_REAL(bundle_encode, kBundleLibrary)
NORIX_PROBE_REAL(bundle_decode, kBundleLibrary)

namespace norix::probe {
namespace {

constexpr const char *kActionId = "actionId";
constexpr const char *kActionType = "actionType";
constexpr const char *kActionParams = "actionParams";
constexpr const char *kRequestId = "requestId";

// What was read of the latest request, while it is: the loop's thread alone gets here.
struct {
  const bundle *request = nullptr;
  std::uint64_t number = 0;
  RequestTexts texts;
} latest;

const char *textIn(bundle *request, const char *key) {
  char *text = nullptr;
  real::bundle_get_str(request, key, &text);
  return text;
}

// The library asks for the id once per request, before it does anything else with it.
void reportReceived(bundle *request, const void *id) {
  const RequestTexts texts = {textIn(request, kActionId), textIn(request, kActionType),
                              textIn(request, kActionParams)};
  latest = {request, countRequest(), texts};
  std::uint64_t requestId = 0;
  if (id != nullptr) {
    std::memcpy(&requestId, id, sizeof requestId);
  }
  Record received(EventKind::Received);
  received.number(Field::Request, static_cast<std::int64_t>(latest.number))
      .text(Field::Action, texts.actionId)
      .decimal(Field::RequestId, requestId)
      .text(Field::Type, texts.actionType)
      .text(Field::Params, texts.params);
  report(received);
}

} // namespace

RequestTexts readRequest(bundle *request) {
  if (request == latest.request && latest.number == latestRequest()) {
    return latest.texts;
  }
  return {textIn(request, kActionId), textIn(request, kActionType), textIn(request, kActionParams)};
}

void freeReally(bundle *freed) {
  real::bundle_free(freed);
}

} // namespace norix::probe

NORIX_PROBE_EXPORT bundle *bundle_create(void) {
  bundle *const created = real::bundle_create();
  noteCreated(created);
  return created;
}

NORIX_PROBE_EXPORT bundle *bundle_dup(bundle *b_from) {
  noteUse(b_from, __func__);
  bundle *const created = real::bundle_dup(b_from);
  noteCreated(created);
  return created;
}

NORIX_PROBE_EXPORT bundle *bundle_decode(const bundle_raw *r, const int data_size) {
  bundle *const created = real::bundle_decode(r, data_size);
  noteCreated(created);
  return created;
}

NORIX_PROBE_EXPORT int bundle_free(bundle *b) {
  if (norix::probe::keepsFromFreeing(b, isInLibrary(__builtin_return_address(0)))) {
    return BUNDLE_ERROR_NONE;
  }
  return real::bundle_free(b);
}

NORIX_PROBE_EXPORT int bundle_get_byte(bundle *b, const char *key, void **byte, size_t *size) {
  noteUse(b, __func__);
  const int result = real::bundle_get_byte(b, key, byte, size);
  if (key != nullptr && byte != nullptr && std::strcmp(key, norix::probe::kRequestId) == 0
      && isInLibrary(__builtin_return_address(0))) {
    norix::probe::reportReceived(b, *byte);
  }
  return result;
}

NORIX_PROBE_EXPORT int bundle_get_str(bundle *b, const char *key, char **str) {
  noteUse(b, __func__);
  return real::bundle_get_str(b, key, str);
}

NORIX_PROBE_EXPORT const char *bundle_get_val(bundle *b, const char *key) {
  noteUse(b, __func__);
  return real::bundle_get_val(b, key);
}

NORIX_PROBE_EXPORT int bundle_get_type(bundle *b, const char *key) {
  noteUse(b, __func__);
  return real::bundle_get_type(b, key);
}

NORIX_PROBE_EXPORT int bundle_get_count(bundle *b) {
  noteUse(b, __func__);
  return real::bundle_get_count(b);
}

NORIX_PROBE_EXPORT const char **bundle_get_str_array(bundle *b, const char *key, int *len) {
  noteUse(b, __func__);
  return real::bundle_get_str_array(b, key, len);
}

NORIX_PROBE_EXPORT int bundle_get_byte_array(bundle *b, const char *key, void ***byte_array,
                                             unsigned int *len, unsigned int **array_element_size) {
  noteUse(b, __func__);
  return real::bundle_get_byte_array(b, key, byte_array, len, array_element_size);
}

NORIX_PROBE_EXPORT void bundle_foreach(bundle *b, bundle_iterator_t iter, void *user_data) {
  noteUse(b, __func__);
  real::bundle_foreach(b, iter, user_data);
}

NORIX_PROBE_EXPORT int bundle_encode(bundle *b, bundle_raw **r, int *len) {
  noteUse(b, __func__);
  return real::bundle_encode(b, r, len);
}

NORIX_PROBE_EXPORT int bundle_del(bundle *b, const char *key) {
  noteUse(b, __func__);
  return real::bundle_del(b, key);
}

NORIX_PROBE_EXPORT int bundle_add_str(bundle *b, const char *key, const char *str) {
  noteUse(b, __func__);
  return real::bundle_add_str(b, key, str);
}

NORIX_PROBE_EXPORT int bundle_add_byte(bundle *b, const char *key, const void *byte,
                                       const size_t size) {
  noteUse(b, __func__);
  return real::bundle_add_byte(b, key, byte, size);
}

NORIX_PROBE_EXPORT int bundle_add_str_array(bundle *b, const char *key, const char **str_array,
                                            const int len) {
  noteUse(b, __func__);
  return real::bundle_add_str_array(b, key, str_array, len);
}

NORIX_PROBE_EXPORT int bundle_add_byte_array(bundle *b, const char *key, const unsigned int len) {
  noteUse(b, __func__);
  return real::bundle_add_byte_array(b, key, len);
}

NORIX_PROBE_EXPORT int bundle_set_byte_array_element(bundle *b, const char *key,
                                                     const unsigned int idx, const void *byte,
                                                     const size_t size) {
  noteUse(b, __func__);
  return real::bundle_set_byte_array_element(b, key, idx, byte, size);
}
