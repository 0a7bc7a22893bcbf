/* SPDX-License-Identifier: Apache-2.0 */
#include <dlog.h>

#include <stdarg.h>

static int print_list(log_priority prio, const char *tag, const char *fmt, ...)
    __attribute__((format(printf, 3, 4)));

static int print_list(log_priority prio, const char *tag, const char *fmt, ...) {
  va_list ap;
  int result = 0;

  va_start(ap, fmt);
  result = dlog_vprint(prio, tag, fmt, ap);
  va_end(ap);
  return result;
}

int main(void) {
  return dlog_print(DLOG_ERROR, "C", "%s %d", "one", 1) <= 0
         || print_list(DLOG_ERROR, "C", "%s %d", "two", 2) <= 0
         || dlog_print(DLOG_SILENT, "C", "three") != DLOG_ERROR_INVALID_PARAMETER;
}
