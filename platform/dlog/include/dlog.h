/* SPDX-License-Identifier: Apache-2.0 */
#ifndef DLOG_H
#define DLOG_H

/**
 * @file dlog.h
 * @brief The platform log.
 *
 * The lines go to standard error, or are appended to the file that the environment variable
 * DLOG_FILE names, in dlogutil's brief form with the local time before it:
 *
 *     11-20 13:05:42.117 E/MUSIC   ( 1234): text
 *
 * Which lines are written is the matter of the environment variable DLOG_FILTER, in dlogutil's
 * words: `MUSIC:W *:E` for the lines of the tag MUSIC from warnings on and of all other tags from
 * errors on. Without it all lines are. Both variables are read when the process logs its first
 * line.
 *
 * All functions may be called from any thread, before main() and in destructors of static objects;
 * not from a signal handler. They leave errno as it is and raise
 * neither SIGPIPE nor SIGXFSZ.
 */

#include <stdarg.h> /* NOLINT(modernize-deprecated-headers): for C, too */
#include <tizen_error.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/** @brief The priorities, in ascending order. A line has one from verbose to fatal. */
typedef enum {
  /** No priority. */
  DLOG_UNKNOWN = 0,
  /** No priority. */
  DLOG_DEFAULT,
  /** V: what is seldom of interest. */
  DLOG_VERBOSE,
  /** D: for debugging. */
  DLOG_DEBUG,
  /** I: what happens. */
  DLOG_INFO,
  /** W: what may need attention. */
  DLOG_WARN,
  /** E: what failed. */
  DLOG_ERROR,
  /** F: what ends the program. */
  DLOG_FATAL,
  /** S: for filters; no line passes. */
  DLOG_SILENT,
  /** The number of priorities. */
  DLOG_PRIO_MAX
} log_priority;

/** @brief The results of the functions that are no number of bytes. */
typedef enum {
  /** Success. */
  DLOG_ERROR_NONE = TIZEN_ERROR_NONE,
  /** The format is null or cannot be followed, or the priority is none that a line can have. */
  DLOG_ERROR_INVALID_PARAMETER = TIZEN_ERROR_INVALID_PARAMETER,
  /** The line could not be written. */
  DLOG_ERROR_NOT_PERMITTED = TIZEN_ERROR_NOT_PERMITTED
} dlog_error_e;

/**
 * @brief Logs a text.
 * @details One call is one write. A text of several lines is written with the time, the tag and so
 * on in front of each; a newline at its end adds no line. What one call writes is cut at 4096
 *          bytes, and what it shows of a tag at 128. A line that the filter drops is not formatted.
 * @param[in] prio  The priority, from #DLOG_VERBOSE to #DLOG_FATAL
 * @param[in] tag   Who speaks; null is the same as empty
 * @param[in] fmt   The format, as for printf(); `%m` shows the caller's errno
 * @return The number of bytes written, 0 for a line that the filter drops, otherwise a negative
 *         value. The last result (get_last_result()) is not touched
 * @retval #DLOG_ERROR_INVALID_PARAMETER  @a fmt is null or cannot be followed, or @a prio is none
 *                                        that a line can have
 * @retval #DLOG_ERROR_NOT_PERMITTED      The line, or a part of it, could not be written: standard
 *                                        error is closed, its reader is gone, the disk is full
 */
int dlog_print(log_priority prio, const char *tag, const char *fmt, ...)
    __attribute__((format(printf, 3, 4)));

/**
 * @brief Logs a text, with its arguments in a list.
 * @param[in] prio  As for dlog_print()
 * @param[in] tag   As for dlog_print()
 * @param[in] fmt   As for dlog_print()
 * @param[in] ap    The arguments; indeterminate afterwards, as after vprintf()
 * @return As for dlog_print()
 * @see dlog_print()
 */
int dlog_vprint(log_priority prio, const char *tag, const char *fmt, va_list ap)
    __attribute__((format(printf, 3, 0)));

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
