/* SPDX-License-Identifier: Apache-2.0 */
#ifndef NORIX_H
#define NORIX_H

/**
 * @file norix.h
 * @brief Makes an application drivable by the voice assistant.
 *
 * The assistant asks an application two kinds of question: what its state is, and that it executes
 * an action. The application registers one callback for the first and one per action id for the
 * second, and answers with a text, inside the callback or later.
 *
 * What holds for every call:
 *
 * 1. Thread. All functions are called on the application's main loop (Ecore), which is also where
 *    the callbacks are called. The library creates no thread and takes no lock.
 * 2. Errors. Every function returns #NORIX_ERROR_NONE or a negative value of #norix_error_e. Why a
 *    call failed stands in the platform log under the tag NORIX-APPSDK.
 * 3. Null. A null text to answer with is sent as the text "null". A null action id is refused. A
 *    null callback unsets.
 * 4. Ownership. Texts given to the library are copied at once. Texts received from it are released
 *    with free(). A bundle received by a callback is lent until the callback returns.
 * 5. Request handles. A handle names the latest request only: it can be answered until it has been
 *    answered, until the next request arrives, or until 30 seconds have passed, when the assistant
 *    is told that the request timed out. Answering a replaced request, or one that timed out, is no
 *    error: the answer is dropped, with #NORIX_ERROR_NONE.
 * 6. Memory. Every function returns #NORIX_ERROR_OUT_OF_MEMORY when the library's own object could
 *    not be allocated by the first call, and from then on.
 * 7. Exceptions. The functions catch none: std::bad_alloc passes through them. A callback must not
 *    throw: it is called from the main loop, which an exception would leave unusable (a timer that
 *    never ends, jobs that never run). One that is thrown all the same is logged and ends in the
 *    library; the request times out, unless it was answered before.
 * 8. Wrong order. Every function may be called at any time on the main loop, also from inside a
 *    callback, also norix_deinitialize().
 * 9. Unloading. The library stays in the process once it has been loaded: dlclose() does not unload
 *    it, because timers and ports refer to its code.
 *
 * @code
 * static void on_state(void *request, void *user_data) {
 *   norix_complete_app_state_request(request, "{\"lamp\":\"on\"}");
 * }
 *
 * static void on_lamp_off(void *request, bundle *params, void *user_data) {
 *   norix_complete_action_execution(request, "The lamp is off");
 * }
 *
 * static int start_voice(void) {
 *   return norix_initialize() == NORIX_ERROR_NONE
 *          && norix_set_app_state_request_cb(on_state, NULL) == NORIX_ERROR_NONE
 *          && norix_set_action_execution_cb("lampOff", on_lamp_off, NULL) == NORIX_ERROR_NONE;
 * }
 * @endcode
 */

#include <bundle.h>

#ifdef __cplusplus
extern "C" {
#endif

/** @brief Marks what the library exports. */
#define NORIX_EXPORT __attribute__((visibility("default")))

/**
 * @brief The key of the manifest metadata in which an application declares the SDK version it was
 *        written for. Without such an entry, or with a version of the 1.0-alpha series, the library
 *        does not initialise.
 */
#define NORIX_SDK_VERSION_METADATA_KEY "http://valtren.com/tizen/metadata/norix/sdk/version"

/** @brief The results of the library's functions. */
typedef enum {
  /** Success. */
  NORIX_ERROR_NONE = 0,
  /** The library's objects could not be allocated. */
  NORIX_ERROR_OUT_OF_MEMORY = -12,
  /** A required argument is null, or a request handle names no request. */
  NORIX_ERROR_INVALID_PARAMETER = -22,
  /** The manifest declares no SDK version, or one of the 1.0-alpha series. */
  NORIX_ERROR_NOT_SUPPORTED = -1073741822,
  /** The library is not initialised, the channel failed, or no answer is awaited any more. */
  NORIX_ERROR_OPERATION_FAILED = -1073741825
} norix_error_e;

/** @name The keys and values of request and response bundles
 *
 * The pointers are variables, not constants; the library reads them each time it needs one. Leave
 * them as they are: the assistant knows these texts.
 * @{ */

/** Request: the id of the action, a string. */
extern NORIX_EXPORT const char *ACTION_ID;
/** Request: the type of the action, a string. */
extern NORIX_EXPORT const char *ACTION_TYPE;
/** Request: the parameters of the action, a string. */
extern NORIX_EXPORT const char *ACTION_PARAMS;
/** Request and response: the id of the request, 8 bytes, an unsigned integer in host byte order. */
extern NORIX_EXPORT const char *REQUEST_ID;
/** The action id of an app state request. */
extern NORIX_EXPORT const char *ACTION_GET_APP_STATE;
/** Response: the result of an action, a string. */
extern NORIX_EXPORT const char *KEY_ACTION_RESULT;
/** Response: the application's state, a string. */
extern NORIX_EXPORT const char *KEY_APP_STATE;
/** Response: #ACTION_EXECUTION_SUCCESS or #ACTION_EXECUTION_FAILURE, a string. */
extern NORIX_EXPORT const char *KEY_STATUS_CODE;
/** Response: why the request failed, a string; failures only. */
extern NORIX_EXPORT const char *KEY_STATUS_MESSAGE;
/** Status of a request that the application answered. */
extern NORIX_EXPORT const char *ACTION_EXECUTION_SUCCESS;
/** Status of a request that the library answered in the application's place. */
extern NORIX_EXPORT const char *ACTION_EXECUTION_FAILURE;
/** @} */

/** @name The assistant and who may take its place
 * @{ */

/** The application id of the assistant. The library does not read it. */
extern NORIX_EXPORT const char *NORIX_PROXY_APP_NAME;
/** The folder of the file that lists who may send requests, with a slash at its end. */
extern NORIX_EXPORT const char *NORIX_PROXY_ALLOW_APPID_LIST_PATH;
/** The name of that file: one application id a line. Without the file, everybody may. */
extern NORIX_EXPORT const char *NORIX_PROXY_ALLOW_APPID_LIST_FILE_NAME;
/** @} */

/** @name How long the application may take for an answer
 * @{ */

/** Seconds; with #COMPLETE_WAITING_MAX_COUNT the factors of the 30 seconds. */
extern NORIX_EXPORT const double COMPLETE_CHECKING_TIME;
/** A count; see #COMPLETE_CHECKING_TIME. */
extern NORIX_EXPORT const double COMPLETE_WAITING_MAX_COUNT;
/** The length of an empty text. The library does not read it. */
extern NORIX_EXPORT const int ZERO_LENGTH;
/** @} */

/**
 * @brief Called when the assistant asks for the application's state.
 * @details Answer with norix_complete_app_state_request(), inside the callback or within 30
 * seconds.
 * @param[in] request_handle  Names the request; see convention 5
 * @param[in] user_data       What was given to norix_set_app_state_request_cb()
 */
typedef void (*norix_app_state_request_cb)(void *request_handle, void *user_data);

/**
 * @brief Called when the assistant asks that the application executes an action.
 * @details Answer with norix_complete_action_execution(), inside the callback or within 30 seconds.
 * @remarks A request waits for its callback to be registered: it is looked up every 0.02 seconds,
 * for the last time after 0.10 seconds, and after 0.12 seconds the assistant is told that the
 *          callback is not registered. A request that waited is delivered with a handle that cannot
 *          be answered: the assistant is told that it timed out. Register the callbacks right after
 *          norix_initialize().
 * @param[in] request_handle  Names the request; see convention 5
 * @param[in] action_params   The request: #ACTION_PARAMS and the other keys. Lent until the
 * callback returns: copy what is needed later, do not free
 * @param[in] user_data       What was given to norix_set_action_execution_cb()
 */
typedef void (*norix_action_execution_cb)(void *request_handle, bundle *action_params,
                                          void *user_data);

/**
 * @brief Makes the application reachable for the assistant.
 * @details A second call does nothing and succeeds. Callbacks are registered afterwards.
 * @remarks The application id and the declared SDK version are read once, by the first call of any
 *          of these functions; std::logic_error leaves that call when the process has no
 *          application id. An exception leaves this function when the port cannot be created.
 * @return 0 on success, otherwise a negative error value
 * @retval #NORIX_ERROR_NONE              Success, or already initialised
 * @retval #NORIX_ERROR_NOT_SUPPORTED     The manifest declares no SDK version, or one that contains
 *                                        "1.0-alpha"; this cannot be cured within the process
 * @retval #NORIX_ERROR_OPERATION_FAILED  The port cannot be listened on
 * @retval #NORIX_ERROR_OUT_OF_MEMORY     An object could not be allocated
 * @pre ecore_init() has been called; the platform's application main functions do that.
 * @see norix_deinitialize()
 */
NORIX_EXPORT int norix_initialize(void);

/**
 * @brief Closes the connections and forgets every callback.
 * @details norix_initialize() may be called again afterwards.
 * @return 0 on success, otherwise a negative error value
 * @retval #NORIX_ERROR_NONE           Success, also when the library was not initialised
 * @retval #NORIX_ERROR_OUT_OF_MEMORY  See convention 6
 */
NORIX_EXPORT int norix_deinitialize(void);

/**
 * @brief Registers the callback that answers for the application's state.
 * @details There is one: a second registration replaces the first.
 * @param[in] callback   The callback; null unsets
 * @param[in] user_data  Given to the callback unchanged
 * @return 0 on success, otherwise a negative error value
 * @retval #NORIX_ERROR_NONE              Success
 * @retval #NORIX_ERROR_OPERATION_FAILED  The library is not initialised
 * @retval #NORIX_ERROR_OUT_OF_MEMORY     The registration could not be allocated; or convention 6
 * @see norix_unset_app_state_request_cb()
 */
NORIX_EXPORT int norix_set_app_state_request_cb(norix_app_state_request_cb callback,
                                                void *user_data);

/**
 * @brief Takes the state callback away. Requests are then answered with a failure at once.
 * @return 0 on success, otherwise a negative error value
 * @retval #NORIX_ERROR_NONE              Success, also when none was registered
 * @retval #NORIX_ERROR_OPERATION_FAILED  The library is not initialised
 * @retval #NORIX_ERROR_OUT_OF_MEMORY     See convention 6
 */
NORIX_EXPORT int norix_unset_app_state_request_cb(void);

/**
 * @brief Answers an app state request.
 * @param[in] request_handle  The handle that the callback received
 * @param[in] app_state       The state, in whatever form the assistant knows for this application;
 *                            null is sent as the text "null"
 * @return 0 on success, otherwise a negative error value
 * @retval #NORIX_ERROR_NONE               The answer was handed to the channel, or dropped because
 *                                         the handle names no current request: it was replaced or
 *                                         timed out
 * @retval #NORIX_ERROR_INVALID_PARAMETER  @a request_handle is null
 * @retval #NORIX_ERROR_OPERATION_FAILED   The library is not initialised; the assistant is gone or
 * has no delegate; the request was answered before, or asks for an action; or it timed out and the
 * response that says so could not be made
 * @retval #NORIX_ERROR_OUT_OF_MEMORY      The response could not be allocated; or convention 6
 */
NORIX_EXPORT int norix_complete_app_state_request(void *request_handle, const char *app_state);

/**
 * @brief Registers the callback that executes an action.
 * @details There is one per action id: a second registration replaces the first.
 * @param[in] action_id  The id that the assistant asks for
 * @param[in] callback   The callback; null unsets
 * @param[in] user_data  Given to the callback unchanged
 * @return 0 on success, otherwise a negative error value
 * @retval #NORIX_ERROR_NONE               Success
 * @retval #NORIX_ERROR_INVALID_PARAMETER  @a action_id is null, or the registration could not be
 *                                         allocated
 * @retval #NORIX_ERROR_OPERATION_FAILED   The library is not initialised
 * @retval #NORIX_ERROR_OUT_OF_MEMORY      See convention 6
 * @see norix_unset_action_execution_cb()
 */
NORIX_EXPORT int norix_set_action_execution_cb(const char *action_id,
                                               norix_action_execution_cb callback, void *user_data);

/**
 * @brief Takes the callback of an action away.
 * @param[in] action_id  The id that it was registered for
 * @return 0 on success, otherwise a negative error value
 * @retval #NORIX_ERROR_NONE               Success, also when none was registered
 * @retval #NORIX_ERROR_INVALID_PARAMETER  @a action_id is null
 * @retval #NORIX_ERROR_OPERATION_FAILED   The library is not initialised
 * @retval #NORIX_ERROR_OUT_OF_MEMORY      See convention 6
 */
NORIX_EXPORT int norix_unset_action_execution_cb(const char *action_id);

/**
 * @brief Answers an action request.
 * @param[in] request_handle  The handle that the callback received
 * @param[in] result          The result text, reported to the user; null is sent as the text "null"
 * @return 0 on success, otherwise a negative error value
 * @retval #NORIX_ERROR_NONE               The answer was handed to the channel, or dropped because
 *                                         the handle names no current request: it was answered
 * before, replaced or timed out
 * @retval #NORIX_ERROR_INVALID_PARAMETER  @a request_handle is null
 * @retval #NORIX_ERROR_OPERATION_FAILED   The library is not initialised; the assistant is gone or
 * has no delegate; the request asks for the state; or it timed out and the response that says so
 * could not be made
 * @retval #NORIX_ERROR_OUT_OF_MEMORY      The response could not be allocated; or convention 6
 */
NORIX_EXPORT int norix_complete_action_execution(void *request_handle, const char *result);

/**
 * @brief Gets the id of the action that a request asks for.
 * @details Of use when one callback serves several actions. For an app state request the id is
 *          #ACTION_GET_APP_STATE.
 * @remarks Release @a action_id with free(); it is null, with success, when the copy found no
 * memory.
 * @param[in]  request_handle  The handle that the callback received
 * @param[out] action_id       The id, or null when the handle names no current request
 * @return 0 on success, otherwise a negative error value
 * @retval #NORIX_ERROR_NONE               Success
 * @retval #NORIX_ERROR_INVALID_PARAMETER  @a action_id is null, or the handle names no current
 *                                         request
 * @retval #NORIX_ERROR_OUT_OF_MEMORY      See convention 6
 */
NORIX_EXPORT int norix_get_action_name(void *request_handle, char **action_id);

#ifdef __cplusplus
}
#endif
#endif
