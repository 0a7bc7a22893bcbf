/* SPDX-License-Identifier: Apache-2.0 */
#ifndef APP_MANAGER_H
#define APP_MANAGER_H

/**
 * @file app_manager.h
 * @brief Which applications run; what installed ones declare is in app_info.h.
 */

#include <app_info.h>
#include <stdbool.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/**
 * @brief Tells whether an application runs.
 * @details On a desktop an application runs while its main function does, or while a process lives
 *          that was started for a launch request or for a proxy.
 * @param[in]  app_id   The application's id
 * @param[out] running  Whether it runs
 * @return 0 on success, otherwise a negative error value
 * @retval #APP_MANAGER_ERROR_NONE               Success, also for an application that nobody knows
 * @retval #APP_MANAGER_ERROR_INVALID_PARAMETER  An argument is null
 * @retval #APP_MANAGER_ERROR_OUT_OF_MEMORY      There was no memory
 */
int app_manager_is_running(const char *app_id, bool *running);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
