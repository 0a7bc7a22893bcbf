// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_TRACE_NAMES_H
#define NORIX_ASSISTANT_TRACE_NAMES_H

#include "assistant/trace/Event.h"

#include <string>

namespace norix::assistant::trace {

/// A result code of norix.h with its name: "NORIX_ERROR_NOT_SUPPORTED (-1073741822)".
std::string resultName(int result);

/// Whether the function answers a request.
bool isAnswer(const std::string &function);

/// The exception of an event: its type as it stands in the source, and its text.
std::string exceptionIn(const Event &event);

} // namespace norix::assistant::trace

#endif
