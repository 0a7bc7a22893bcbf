// SPDX-License-Identifier: Apache-2.0
#include "VoiceTest.h"

norix::Outcome answer(norix::Request &request, const std::string &text) {
  return request.answer(text);
}
