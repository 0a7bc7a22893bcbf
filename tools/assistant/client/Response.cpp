// SPDX-License-Identifier: Apache-2.0
#include "assistant/client/Response.h"

#include "assistant/client/Error.h"

#include <cstring>
#include <utility>

namespace norix::assistant {
namespace {

// The keys and values of the library's constants. They are repeated here because an assistant is
// another program than the application: it does not link the library.
constexpr const char *kStatusCode = "status_code";
constexpr const char *kStatusMessage = "status_msg";
constexpr const char *kActionResult = "result";
constexpr const char *kAppState = "appContext";
constexpr const char *kRequestId = "requestId";
constexpr const char *kSuccess = "ACTION_EXECUTION_SUCCESS";
constexpr const char *kFailure = "ACTION_EXECUTION_FAILURE";

[[noreturn]] void refuse(const std::string &why) {
  throw Error(Failure::Malformed, "malformed response: " + why);
}

bool has(bundle *content, const char *key) {
  return bundle_get_type(content, key) != BUNDLE_TYPE_NONE;
}

std::string requireString(bundle *content, const char *key) {
  if (!has(content, key)) {
    refuse(std::string("no key '") + key + "'");
  }
  char *value = nullptr;
  if (bundle_get_str(content, key, &value) != BUNDLE_ERROR_NONE || value == nullptr) {
    refuse(std::string("'") + key + "' is no string");
  }
  return value;
}

} // namespace

Response::Response(BundlePtr content) : _content(std::move(content)) {
  if (!_content) {
    refuse("it carries no bundle");
  }
  readStatus();
  readText();
  readRequestId();
}

void Response::readStatus() {
  const std::string code = requireString(_content.get(), kStatusCode);
  if (code != kSuccess && code != kFailure) {
    refuse("unknown '" + std::string(kStatusCode) + "' '" + code + "'");
  }

  _succeeded = code == kSuccess;
  if (!_succeeded) {
    _statusMessage = requireString(_content.get(), kStatusMessage);
  }
}

void Response::readText() {
  _isState = has(_content.get(), kAppState);
  if (_isState && has(_content.get(), kActionResult)) {
    refuse(std::string("both '") + kActionResult + "' and '" + kAppState + "'");
  }
  if (!_isState && !has(_content.get(), kActionResult)) {
    refuse(std::string("neither '") + kActionResult + "' nor '" + kAppState + "'");
  }

  _text = requireString(_content.get(), _isState ? kAppState : kActionResult);
}

void Response::readRequestId() {
  if (!has(_content.get(), kRequestId)) {
    refuse(std::string("no key '") + kRequestId + "'");
  }
  void *bytes = nullptr;
  size_t size = 0;
  if (bundle_get_byte(_content.get(), kRequestId, &bytes, &size) != BUNDLE_ERROR_NONE) {
    refuse(std::string("'") + kRequestId + "' is no byte entry");
  }
  if (size != sizeof _requestId) {
    refuse(std::string("'") + kRequestId + "' has " + std::to_string(size) + " bytes, not 8");
  }

  std::memcpy(&_requestId, bytes, sizeof _requestId);
}

} // namespace norix::assistant
