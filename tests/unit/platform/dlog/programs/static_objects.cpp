// SPDX-License-Identifier: Apache-2.0
//
// Logs a line before main(), one in it, and one when its static objects are destroyed.
#include <dlog.h>

namespace {

struct Speaker {
  Speaker() { dlog_print(DLOG_INFO, "STATIC", "constructor"); }
  Speaker(const Speaker &) = delete;
  Speaker &operator=(const Speaker &) = delete;
  ~Speaker() { dlog_print(DLOG_INFO, "STATIC", "destructor"); }
};

const Speaker speaker;

} // namespace

int main() {
  dlog_print(DLOG_INFO, "STATIC", "main");
  return 0;
}
