/* SPDX-License-Identifier: Apache-2.0 */
#ifndef APP_MANAGER_H
#define APP_MANAGER_H

/**
 * @file app_manager.h
 * @brief The entrance to the installed applications; their information is in app_info.h.
 */

#include <app_info.h>

#endif
