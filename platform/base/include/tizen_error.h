/* SPDX-License-Identifier: Apache-2.0 */
#ifndef TIZEN_ERROR_H
#define TIZEN_ERROR_H

/**
 * @file tizen_error.h
 * @brief The error numbers that all interfaces share, and the calling thread's last result.
 */

#include <errno.h> /* NOLINT(modernize-deprecated-headers): for C, too */

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/** @brief The error numbers: negated errno values, and two of the platform's own. */
typedef enum {
  /** Success. */
  TIZEN_ERROR_NONE = 0,
  /** The operation is not permitted. */
  TIZEN_ERROR_NOT_PERMITTED = -EPERM,
  /** There is no such file. */
  TIZEN_ERROR_NO_SUCH_FILE = -ENOENT,
  /** Input or output failed. */
  TIZEN_ERROR_IO_ERROR = -EIO,
  /** There is no memory. */
  TIZEN_ERROR_OUT_OF_MEMORY = -ENOMEM,
  /** Access is denied. */
  TIZEN_ERROR_PERMISSION_DENIED = -EACCES,
  /** An argument is invalid. */
  TIZEN_ERROR_INVALID_PARAMETER = -EINVAL,
  /** There is no such key. */
  TIZEN_ERROR_KEY_NOT_AVAILABLE = -ENOKEY,
  /** It is not known what went wrong. */
  TIZEN_ERROR_UNKNOWN = -1073741824,
  /** This is not supported here. */
  TIZEN_ERROR_NOT_SUPPORTED = -1073741822
} tizen_error_e;

/**
 * @brief Gets the result of the platform function that the calling thread called last.
 * @details Of use for functions that return something else than a result.
 * @return #TIZEN_ERROR_NONE or a negative error value; #TIZEN_ERROR_NONE in a new thread
 */
int get_last_result(void);

/**
 * @brief Sets what get_last_result() returns in the calling thread.
 * @param[in] err  The value, which may be any
 */
void set_last_result(int err);

/**
 * @brief Gets a text for an error value.
 * @param[in] err  A value of #tizen_error_e, or any negated errno value
 * @return An English text; static: do not change or free it. Never null: an unknown value has the
 *         text "Undefined error number"
 */
char *get_error_message(int err);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
