// SPDX-License-Identifier: Apache-2.0
#include "assistant/trace/names.h"

#include <norix.h>

#include <cstdlib>
#include <cxxabi.h>
#include <memory>

namespace norix::assistant::trace {
namespace {

const char *nameOf(int result) {
  switch (result) {
  case NORIX_ERROR_NONE:
    return "NORIX_ERROR_NONE";
  case NORIX_ERROR_OUT_OF_MEMORY:
    return "NORIX_ERROR_OUT_OF_MEMORY";
  case NORIX_ERROR_INVALID_PARAMETER:
    return "NORIX_ERROR_INVALID_PARAMETER";
  case NORIX_ERROR_NOT_SUPPORTED:
    return "NORIX_ERROR_NOT_SUPPORTED";
  case NORIX_ERROR_OPERATION_FAILED:
    return "NORIX_ERROR_OPERATION_FAILED";
  default:
    return "an unknown result";
  }
}

std::string demangled(const std::string &name) {
  int status = 0;
  const std::unique_ptr<char, decltype(&std::free)> text(
      abi::__cxa_demangle(name.c_str(), nullptr, nullptr, &status), std::free);
  return status == 0 && text != nullptr ? text.get() : name;
}

} // namespace

std::string resultName(int result) {
  return std::string(nameOf(result)) + " (" + std::to_string(result) + ")";
}

bool isAnswer(const std::string &function) {
  return function == "norix_complete_action_execution"
         || function == "norix_complete_app_state_request";
}

std::string exceptionIn(const Event &event) {
  const std::string type = demangled(event.text("exception"));
  const std::string what = event.text("what");
  return what.empty() ? type : type + " (" + what + ")";
}

} // namespace norix::assistant::trace
