/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Preloaded into a process, it makes the wall clock jump: each look finds it hours further on,
 * and every other time hours back. Clocks that nobody can set are left alone.
 */
#define _GNU_SOURCE
#include <stdatomic.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

enum { JUMP_SECONDS = 5 * 3600 };

static time_t jump(void) {
  static atomic_int looks = 0;
  const int look = atomic_fetch_add(&looks, 1) + 1;

  return (look % 2 != 0 ? look : -look) * (time_t)JUMP_SECONDS;
}

static int is_wall_clock(clockid_t clock) {
  return clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE || clock == CLOCK_TAI;
}

__attribute__((visibility("default"))) int clock_gettime(clockid_t clock, struct timespec *now) {
  const int result = (int)syscall(SYS_clock_gettime, clock, now);
  if (result == 0 && is_wall_clock(clock)) {
    now->tv_sec += jump();
  }
  return result;
}

__attribute__((visibility("default"))) int gettimeofday(struct timeval *restrict now,
                                                        void *restrict zone) {
  struct timespec precise;
  const int result = clock_gettime(CLOCK_REALTIME, &precise);
  (void)zone;
  if (result == 0) {
    now->tv_sec = precise.tv_sec;
    now->tv_usec = precise.tv_nsec / 1000;
  }
  return result;
}

__attribute__((visibility("default"))) time_t time(time_t *result) {
  struct timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  if (result != NULL) {
    *result = now.tv_sec;
  }
  return now.tv_sec;
}
