/* SPDX-License-Identifier: Apache-2.0 */
#ifndef SERVICE_APP_H
#define SERVICE_APP_H

/**
 * @file service_app.h
 * @brief The main function and the life cycle of an application without a window.
 */

#include <app_common.h>
#include <app_control.h>
#include <stdbool.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/**
 * @brief Called before the loop begins, with Ecore set up.
 * @return True to go on, false to end the application: no other callback is called then
 */
typedef bool (*service_app_create_cb)(void *user_data);
/** @brief Called after the loop has ended, with Ecore still there. */
typedef void (*service_app_terminate_cb)(void *user_data);
/** @brief Called for the launch, and for each launch request. The handle is lent for the call. */
typedef void (*service_app_control_cb)(app_control_h app_control, void *user_data);

/** @brief An application's callbacks. Those that it does not need are null. */
typedef struct {
  service_app_create_cb create;       /**< Before the loop. */
  service_app_terminate_cb terminate; /**< After the loop. */
  service_app_control_cb app_control; /**< The launch, and each request. */
} service_app_lifecycle_callback_s;

/**
 * @brief Runs the application: returns when it has ended.
 * @details The order is create, app_control, the loop, terminate.
 *          The loop is Ecore's, set up before create and gone when this returns. It ends with
 *          service_app_exit(), or with the signals SIGTERM, SIGINT and SIGQUIT. An exception thrown
 *          by a callback passes through: terminate is not called then, and Ecore is shut down.
 * @remarks Call it on the main thread. Once it has returned it may be called again.
 * @param[in] argc       The number of arguments, at least 1
 * @param[in] argv       The arguments
 * @param[in] callback   What to call, copied; only create must be there
 * @param[in] user_data  Given to the callbacks unchanged
 * @return 0 when the application has ended, otherwise a negative error value
 * @retval #APP_ERROR_NONE               The application has ended, also when create returned false
 * @retval #APP_ERROR_INVALID_PARAMETER  @a argc is not positive, @a argv or @a callback is null, or
 *                                       there is no create callback
 * @retval #APP_ERROR_INVALID_CONTEXT    The process has no application id (app_get_id()), or the
 *                                       loop cannot be set up
 * @retval #APP_ERROR_ALREADY_RUNNING    Called from inside an application's main function
 */
int service_app_main(int argc, char **argv, service_app_lifecycle_callback_s *callback,
                     void *user_data);
/**
 * @brief Ends the application: its loop ends, then terminate is called.
 * @details May be called in every callback, and on any thread while the loop runs. Within create it
 *          keeps the loop from starting, and the application is not launched. Without a running
 *          application it does nothing.
 */
void service_app_exit(void);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
