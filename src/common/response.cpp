// SPDX-License-Identifier: Apache-2.0
#include "common/response.h"

#include "norix.h"

namespace norix {

bundle *createAnswer(const char *key, const std::string &text, unsigned long long requestId) {
  bundle *const response = bundle_create();
  if (response == nullptr) {
    return nullptr;
  }
  bundle_add_str(response, KEY_STATUS_CODE, ACTION_EXECUTION_SUCCESS);
  bundle_add_str(response, key, text.c_str());
  bundle_add_byte(response, REQUEST_ID, &requestId, sizeof requestId);
  return response;
}

bundle *createFailure(const char *key, const char *message, unsigned long long requestId) {
  bundle *const response = bundle_create();
  if (response == nullptr) {
    return nullptr;
  }
  bundle_add_str(response, key, "");
  bundle_add_str(response, KEY_STATUS_CODE, ACTION_EXECUTION_FAILURE);
  bundle_add_str(response, KEY_STATUS_MESSAGE, message);
  bundle_add_byte(response, REQUEST_ID, &requestId, sizeof requestId);
  return response;
}

} // namespace norix
