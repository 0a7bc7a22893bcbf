/* SPDX-License-Identifier: Apache-2.0 */
#ifndef APP_CONTROL_H
#define APP_CONTROL_H

/**
 * @file app_control.h
 * @brief Launch requests: starting applications, and telling running ones what to do.
 *
 * A request for an application that runs reaches its app_control callback. One for an application
 * that does not run starts it, and is the first that its app_control callback gets. On a desktop
 * the applications that can be started are those in $NORIX_DESKTOP_APPS/\<app id\>/.
 *
 * All functions belong to the main loop's thread. A handle that a function or a callback hands out
 * is lent, unless it comes from app_control_create() or app_control_clone(); a text is the
 * caller's, released with free(). An output is left untouched when the function fails.
 *
 * @code
 * app_control_h request = NULL;
 * if (app_control_create(&request) == APP_CONTROL_ERROR_NONE) {
 *   app_control_set_app_id(request, "org.example.music");
 *   app_control_add_extra_data(request, "song", "Take Five");
 *   if (app_control_send_launch_request(request, NULL, NULL) != APP_CONTROL_ERROR_NONE) {
 *     fprintf(stderr, "the player does not start\n");
 *   }
 *   app_control_destroy(request);
 * }
 * @endcode
 */

#include <tizen_error.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/** @brief The operation of a request that asks for nothing particular. */
#define APP_CONTROL_OPERATION_DEFAULT "http://tizen.org/appcontrol/operation/default"
/** @brief The operation of a request that starts the application as its icon does. */
#define APP_CONTROL_OPERATION_MAIN "http://tizen.org/appcontrol/operation/main"

/** @brief A launch request, or the reply to one. */
typedef struct app_control_s *app_control_h;

/** @brief The results of the functions. */
typedef enum {
  /** Success. */
  APP_CONTROL_ERROR_NONE = TIZEN_ERROR_NONE,
  /** A required argument is null, empty or out of its range. */
  APP_CONTROL_ERROR_INVALID_PARAMETER = TIZEN_ERROR_INVALID_PARAMETER,
  /** There was no memory. */
  APP_CONTROL_ERROR_OUT_OF_MEMORY = TIZEN_ERROR_OUT_OF_MEMORY,
  /** No application has this id. */
  APP_CONTROL_ERROR_APP_NOT_FOUND = -0x01100000 | 0x21,
  /** The request has no such entry. */
  APP_CONTROL_ERROR_KEY_NOT_FOUND = TIZEN_ERROR_KEY_NOT_AVAILABLE,
  /** The key is the platform's own. */
  APP_CONTROL_ERROR_KEY_REJECTED = -129,
  /** The entry is of another type. Not returned on a desktop. */
  APP_CONTROL_ERROR_INVALID_DATA_TYPE = -0x01100000 | 0x22,
  /** The application may not be launched now. Not returned on a desktop. */
  APP_CONTROL_ERROR_LAUNCH_REJECTED = -0x01100000 | 0x23,
  /** The caller may not do this. Not returned on a desktop. */
  APP_CONTROL_ERROR_PERMISSION_DENIED = TIZEN_ERROR_PERMISSION_DENIED,
  /** The application does not start, or does not take the request; the log says why. */
  APP_CONTROL_ERROR_LAUNCH_FAILED = -0x01100000 | 0x24,
  /** The application does not answer in time. Not returned on a desktop. */
  APP_CONTROL_ERROR_TIMED_OUT = -1073741823,
  /** The other application has gone, or wants no reply. */
  APP_CONTROL_ERROR_IO_ERROR = TIZEN_ERROR_IO_ERROR
} app_control_error_e;

/** @brief The outcome of a request. */
typedef enum {
  /** The application has started. Not given on a desktop. */
  APP_CONTROL_RESULT_APP_STARTED = 1,
  /** The operation succeeded. */
  APP_CONTROL_RESULT_SUCCEEDED = 0,
  /** The operation failed. */
  APP_CONTROL_RESULT_FAILED = -1,
  /** The operation was canceled, or the application has ended without a reply. */
  APP_CONTROL_RESULT_CANCELED = -2
} app_control_result_e;

/**
 * @brief Called once, from the main loop, with the reply to a request.
 * @param[in] request    The request as it was sent, lent for the call
 * @param[in] reply      The reply, lent for the call; empty when the application has ended
 * @param[in] result     The outcome of the request
 * @param[in] user_data  As given to app_control_send_launch_request()
 */
typedef void (*app_control_reply_cb)(app_control_h request, app_control_h reply,
                                     app_control_result_e result, void *user_data);

/**
 * @brief Makes an empty request.
 * @param[out] app_control  The handle, released with app_control_destroy()
 * @return 0 on success, otherwise a negative error value
 * @retval #APP_CONTROL_ERROR_NONE               Success
 * @retval #APP_CONTROL_ERROR_INVALID_PARAMETER  @a app_control is null
 * @retval #APP_CONTROL_ERROR_OUT_OF_MEMORY      There was no memory
 */
int app_control_create(app_control_h *app_control);

/**
 * @brief Releases a handle of app_control_create() or app_control_clone().
 * @param[in] app_control  The handle
 * @return 0 on success, otherwise a negative error value
 * @retval #APP_CONTROL_ERROR_NONE               Success
 * @retval #APP_CONTROL_ERROR_INVALID_PARAMETER  @a app_control is null
 */
int app_control_destroy(app_control_h app_control);

/**
 * @brief Copies a handle; the copy of a request that has arrived can be replied to later.
 * @param[out] clone        The copy, released with app_control_destroy()
 * @param[in]  app_control  The handle to copy
 * @return 0 on success, otherwise a negative error value
 * @retval #APP_CONTROL_ERROR_NONE               Success
 * @retval #APP_CONTROL_ERROR_INVALID_PARAMETER  An argument is null
 * @retval #APP_CONTROL_ERROR_OUT_OF_MEMORY      There was no memory
 */
int app_control_clone(app_control_h *clone, app_control_h app_control);

/**
 * @brief Sets what the application is asked to do.
 * @param[in] app_control  The request
 * @param[in] operation    The operation, copied; null for none, which is sent as
 *                         #APP_CONTROL_OPERATION_DEFAULT
 * @return 0 on success, otherwise a negative error value
 * @retval #APP_CONTROL_ERROR_NONE               Success
 * @retval #APP_CONTROL_ERROR_INVALID_PARAMETER  @a app_control is null
 * @retval #APP_CONTROL_ERROR_OUT_OF_MEMORY      There was no memory
 */
int app_control_set_operation(app_control_h app_control, const char *operation);

/**
 * @brief Gets what the application is asked to do.
 * @param[in]  app_control  The request
 * @param[out] operation    A copy, released with free(); null, with success, when there is none
 * @return 0 on success, otherwise a negative error value
 * @retval #APP_CONTROL_ERROR_NONE               Success
 * @retval #APP_CONTROL_ERROR_INVALID_PARAMETER  An argument is null
 * @retval #APP_CONTROL_ERROR_OUT_OF_MEMORY      There was no memory for the copy
 */
int app_control_get_operation(app_control_h app_control, char **operation);

/**
 * @brief Sets the application that the request is for.
 * @param[in] app_control  The request
 * @param[in] app_id       The application's id, copied; null for none
 * @return 0 on success, otherwise a negative error value
 * @retval #APP_CONTROL_ERROR_NONE               Success
 * @retval #APP_CONTROL_ERROR_INVALID_PARAMETER  @a app_control is null
 * @retval #APP_CONTROL_ERROR_OUT_OF_MEMORY      There was no memory
 */
int app_control_set_app_id(app_control_h app_control, const char *app_id);

/**
 * @brief Gets the application that the request is for.
 * @param[in]  app_control  The request
 * @param[out] app_id       A copy, released with free(); null, with success, when there is none
 * @return 0 on success, otherwise a negative error value
 * @retval #APP_CONTROL_ERROR_NONE               Success
 * @retval #APP_CONTROL_ERROR_INVALID_PARAMETER  An argument is null
 * @retval #APP_CONTROL_ERROR_OUT_OF_MEMORY      There was no memory for the copy
 */
int app_control_get_app_id(app_control_h app_control, char **app_id);

/**
 * @brief Adds an entry to the request's data, or replaces the entry of this key.
 * @param[in] app_control  The request
 * @param[in] key          The entry's key, copied; not empty
 * @param[in] value        The entry's value, copied
 * @return 0 on success, otherwise a negative error value
 * @retval #APP_CONTROL_ERROR_NONE               Success
 * @retval #APP_CONTROL_ERROR_INVALID_PARAMETER  An argument is null, or @a key is empty
 * @retval #APP_CONTROL_ERROR_KEY_REJECTED       @a key begins with "__AUL_" or "__APP_SVC_"
 * @retval #APP_CONTROL_ERROR_OUT_OF_MEMORY      There was no memory
 */
int app_control_add_extra_data(app_control_h app_control, const char *key, const char *value);

/**
 * @brief Gets an entry of the request's data.
 * @param[in]  app_control  The request
 * @param[in]  key          The entry's key; not empty
 * @param[out] value        A copy, released with free()
 * @return 0 on success, otherwise a negative error value
 * @retval #APP_CONTROL_ERROR_NONE               Success
 * @retval #APP_CONTROL_ERROR_INVALID_PARAMETER  An argument is null, or @a key is empty
 * @retval #APP_CONTROL_ERROR_KEY_NOT_FOUND      The request has no such entry
 * @retval #APP_CONTROL_ERROR_KEY_REJECTED       @a key begins with "__AUL_" or "__APP_SVC_"
 * @retval #APP_CONTROL_ERROR_OUT_OF_MEMORY      There was no memory for the copy
 */
int app_control_get_extra_data(app_control_h app_control, const char *key, char **value);

/**
 * @brief Gets the application that has sent a request.
 * @param[in]  app_control  The request that the app_control callback got
 * @param[out] id           A copy, released with free()
 * @return 0 on success, otherwise a negative error value
 * @retval #APP_CONTROL_ERROR_NONE               Success
 * @retval #APP_CONTROL_ERROR_INVALID_PARAMETER  An argument is null
 * @retval #APP_CONTROL_ERROR_KEY_NOT_FOUND      Nobody has sent it: the application was started by
 *                                               hand, or the handle is one's own
 * @retval #APP_CONTROL_ERROR_OUT_OF_MEMORY      There was no memory for the copy
 */
int app_control_get_caller(app_control_h app_control, char **id);

/**
 * @brief Sends the request, and starts the application if it does not run.
 * @details Returns when the application has taken the request from its launcher, which a starting
 *          application does after its create callback, and at most 10 seconds later.
 * @param[in] app_control  The request, with an app id
 * @param[in] callback     Called with the reply; null if none is wanted
 * @param[in] user_data    Given to the callback unchanged
 * @return 0 on success, otherwise a negative error value
 * @retval #APP_CONTROL_ERROR_NONE               Success
 * @retval #APP_CONTROL_ERROR_INVALID_PARAMETER  @a app_control is null
 * @retval #APP_CONTROL_ERROR_APP_NOT_FOUND      The request has no app id, or no application has it
 * @retval #APP_CONTROL_ERROR_LAUNCH_FAILED      The application does not start, or takes no
 * requests
 * @retval #APP_CONTROL_ERROR_OUT_OF_MEMORY      There was no memory
 */
int app_control_send_launch_request(app_control_h app_control, app_control_reply_cb callback,
                                    void *user_data);

/**
 * @brief Replies to a request that has arrived.
 * @param[in] reply    The reply's data, made with app_control_create()
 * @param[in] request  The request that the app_control callback got, or its clone
 * @param[in] result   #APP_CONTROL_RESULT_SUCCEEDED, #APP_CONTROL_RESULT_FAILED or
 *                     #APP_CONTROL_RESULT_CANCELED
 * @return 0 on success, otherwise a negative error value
 * @retval #APP_CONTROL_ERROR_NONE               Success
 * @retval #APP_CONTROL_ERROR_INVALID_PARAMETER  A handle is null, nobody has sent @a request, or
 *                                               @a result is none of the three
 * @retval #APP_CONTROL_ERROR_IO_ERROR           The sender has gone, or wants no reply
 * @retval #APP_CONTROL_ERROR_OUT_OF_MEMORY      There was no memory
 */
int app_control_reply_to_launch_request(app_control_h reply, app_control_h request,
                                        app_control_result_e result);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
