/* SPDX-License-Identifier: Apache-2.0 */
#ifndef SYSTEM_INFO_H
#define SYSTEM_INFO_H

/**
 * @file system_info.h
 * @brief What the machine can do.
 */

#include <stdbool.h>
#include <tizen_error.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/** @brief The results of the functions. */
typedef enum {
  /** Success. */
  SYSTEM_INFO_ERROR_NONE = TIZEN_ERROR_NONE,
  /** A required argument is null, or the key is no feature's. */
  SYSTEM_INFO_ERROR_INVALID_PARAMETER = TIZEN_ERROR_INVALID_PARAMETER,
  /** The system cannot be asked. Not returned on a desktop. */
  SYSTEM_INFO_ERROR_IO_ERROR = TIZEN_ERROR_IO_ERROR
} system_info_error_e;

/**
 * @brief Tells whether the machine has a feature.
 * @details A desktop has none of a device's features.
 * @param[in]  key    The feature's key: "http://tizen.org/feature/…", with or without the scheme
 * @param[out] value  Whether the machine has it
 * @return 0 on success, otherwise a negative error value
 * @retval #SYSTEM_INFO_ERROR_NONE               Success
 * @retval #SYSTEM_INFO_ERROR_INVALID_PARAMETER  An argument is null, or @a key is no feature's
 */
int system_info_get_platform_bool(const char *key, bool *value);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
