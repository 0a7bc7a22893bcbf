/* SPDX-License-Identifier: Apache-2.0 */
#ifndef APP_CONTROL_H
#define APP_CONTROL_H

/**
 * @file app_control.h
 * @brief The launch request.
 */

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @brief Names the request that an application was launched with.
 * @details It is lent to the app_control callback until that returns. On a desktop it carries
 * nothing, and is never null.
 */
typedef struct app_control_s *app_control_h;

#ifdef __cplusplus
}
#endif
#endif
