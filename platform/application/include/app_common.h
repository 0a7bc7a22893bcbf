/* SPDX-License-Identifier: Apache-2.0 */
#ifndef APP_COMMON_H
#define APP_COMMON_H

/**
 * @file app_common.h
 * @brief What an application can ask about itself.
 *
 * Every text that a function hands out is the caller's, released with free(); an output is left
 * untouched when the function fails. All functions may be called on any thread, at any time, as
 * long as no other thread changes the environment. Why a call failed stands in the platform log
 * under the tag APP_COMMON.
 *
 * @code
 * char *id = NULL;
 * if (app_get_id(&id) == APP_ERROR_NONE) {
 *   printf("I am %s\n", id);
 *   free(id);
 * }
 * @endcode
 */

#include <tizen_error.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/** @brief The results of what an application asks about itself, and of its main function. */
typedef enum {
  /** Success. */
  APP_ERROR_NONE = TIZEN_ERROR_NONE,
  /** A required argument is null. */
  APP_ERROR_INVALID_PARAMETER = TIZEN_ERROR_INVALID_PARAMETER,
  /** There was no memory for the answer. */
  APP_ERROR_OUT_OF_MEMORY = TIZEN_ERROR_OUT_OF_MEMORY,
  /** The process was not launched as an application, or its manifest cannot be used. */
  APP_ERROR_INVALID_CONTEXT = TIZEN_ERROR_NOT_PERMITTED,
  /** A file does not exist. Not returned on a desktop. */
  APP_ERROR_NO_SUCH_FILE = TIZEN_ERROR_NO_SUCH_FILE,
  /** The main function was called while it runs. */
  APP_ERROR_ALREADY_RUNNING = -EALREADY
} app_error_e;

/**
 * @brief Gets the id of the application that this process is.
 * @details On a desktop it is the value of AUL_APPID; else it stands in the tizen-manifest.xml that
 *          lies beside the program or one folder above. Of several applications in it, the one
 *          whose exec names this program is meant, else the first. It is read once per process.
 * @param[out] id  The id
 * @return 0 on success, otherwise a negative error value
 * @retval #APP_ERROR_NONE               Success
 * @retval #APP_ERROR_INVALID_PARAMETER  @a id is null
 * @retval #APP_ERROR_INVALID_CONTEXT    Neither source tells an id, or the manifest cannot be used
 * @retval #APP_ERROR_OUT_OF_MEMORY      There was no memory for the copy
 */
int app_get_id(char **id);

/**
 * @brief Gets the name of the application for people to read: the label in its manifest.
 * @details Of several labels it is the one without a language, else the first. An application
 *          without a label goes by its id.
 * @param[out] name  The name
 * @return 0 on success, otherwise a negative error value
 * @retval #APP_ERROR_NONE               Success
 * @retval #APP_ERROR_INVALID_PARAMETER  @a name is null
 * @retval #APP_ERROR_INVALID_CONTEXT    The application has no id, or no usable manifest declares
 *                                       it; app_info_create() says where manifests are looked for
 * @retval #APP_ERROR_OUT_OF_MEMORY      There was no memory for the copy
 */
int app_get_name(char **name);

/**
 * @brief Gets the version of the package that the application belongs to, from its manifest.
 * @param[out] version  The version; "" when the manifest has none
 * @return 0 on success, otherwise a negative error value
 * @retval #APP_ERROR_NONE               Success
 * @retval #APP_ERROR_INVALID_PARAMETER  @a version is null
 * @retval #APP_ERROR_INVALID_CONTEXT    The application has no id, or no usable manifest declares
 *                                       it
 * @retval #APP_ERROR_OUT_OF_MEMORY      There was no memory for the copy
 */
int app_get_version(char **version);

/**
 * @brief Gets the folder of the files that came with the application: res/ beside its manifest.
 * @details The folder need not exist.
 * @return The absolute path with a slash at its end, released with free(). Null on failure:
 *         get_last_result() is then #APP_ERROR_INVALID_CONTEXT, the application having no id or no
 *         usable manifest, or #APP_ERROR_OUT_OF_MEMORY
 */
char *app_get_resource_path(void);

/**
 * @brief Gets the folder for the application's own files: $XDG_DATA_HOME/\<app id\>/, or
 *        ~/.local/share/\<app id\>/ without that variable.
 * @details The folder is created when it is missing, accessible to its user alone.
 * @return The absolute path with a slash at its end, released with free(). Null on failure:
 *         get_last_result() is then #APP_ERROR_INVALID_CONTEXT, the application having no id, one
 *         that cannot name a folder, or a folder that cannot be created, or
 *         #APP_ERROR_OUT_OF_MEMORY
 */
char *app_get_data_path(void);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
