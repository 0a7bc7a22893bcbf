/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Preloaded into a process, it sends it the signal $EARLY_SIGNAL at the moment when Ecore has just
 * taken over the signals.
 */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <signal.h>
#include <stdlib.h>
#include <unistd.h>

typedef int init_function(void);

__attribute__((visibility("default"))) int ecore_init(void) {
  union {
    void *address;
    init_function *function;
  } real = {dlsym(RTLD_NEXT, "ecore_init")};
  const int count = real.function();
  const char *const number = getenv("EARLY_SIGNAL");
  /* The first time, which is counted; a library's own call comes when the signals are taken back.
   */
  if (number != NULL && count == 1) {
    kill(getpid(), atoi(number));
  }
  return count;
}
