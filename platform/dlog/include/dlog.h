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
 * The environment variable DLOG_FILTER chooses the lines, in dlogutil's words: `MUSIC:W *:E` writes
 * the lines of the tag MUSIC from warnings on and those of all other tags from errors on. Without
 * it all lines are written. Both variables are read when the process logs its first line.
 *
 * A log may show texts of other processes, so what a terminal would obey is escaped: a control
 * character other than a tab or a newline, or a byte that is not UTF-8, is written as `\x1b`.
 *
 * All functions may be called from any thread, before main() and in destructors of static objects;
 * not from a signal handler. They leave errno as it is and raise neither SIGPIPE nor SIGXFSZ.
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
  /** V: details. */
  DLOG_VERBOSE,
  /** D: for debugging. */
  DLOG_DEBUG,
  /** I: normal operation. */
  DLOG_INFO,
  /** W: a condition that may need attention. */
  DLOG_WARN,
  /** E: a failure. */
  DLOG_ERROR,
  /** F: a failure that ends the program. */
  DLOG_FATAL,
  /** S: in filters, for no lines. */
  DLOG_SILENT,
  /** The number of priorities. */
  DLOG_PRIO_MAX
} log_priority;

/** @brief The results of the functions that are not a number of bytes. */
typedef enum {
  /** Success. */
  DLOG_ERROR_NONE = TIZEN_ERROR_NONE,
  /** The format is null or invalid, or the priority is not one from verbose to fatal. */
  DLOG_ERROR_INVALID_PARAMETER = TIZEN_ERROR_INVALID_PARAMETER,
  /** The line could not be written. */
  DLOG_ERROR_NOT_PERMITTED = TIZEN_ERROR_NOT_PERMITTED
} dlog_error_e;

/**
 * @brief Logs a text.
 * @details One call is one write. A text of several lines is written with the time, the tag and so
 *          on before each; a newline at its end adds no line. One call writes at most 4096 bytes,
 *          escapes included, and at most 128 bytes of a tag; the rest is cut off. A line that the
 *          filter drops is not formatted.
 * @param[in] prio  The priority, from #DLOG_VERBOSE to #DLOG_FATAL
 * @param[in] tag   The component that logs; null is the same as empty
 * @param[in] fmt   The format, as for printf(); `%m` shows the caller's errno
 * @return The number of bytes written, 0 for a line that the filter drops, otherwise a negative
 *         value. The last result (get_last_result()) is not touched
 * @retval #DLOG_ERROR_INVALID_PARAMETER  @a fmt is null or invalid, or @a prio is not one from
 *                                        #DLOG_VERBOSE to #DLOG_FATAL
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
