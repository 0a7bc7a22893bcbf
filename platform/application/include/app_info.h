/* SPDX-License-Identifier: Apache-2.0 */
#ifndef APP_INFO_H
#define APP_INFO_H

/**
 * @file app_info.h
 * @brief What an installed application declares in its manifest.
 *
 * The information is read by app_info_create() and does not change afterwards. One handle is used
 * by one thread at a time. Why a manifest could not be used stands in the platform log under the
 * tag APP_MANAGER: the file, the line, what is wrong and what to do.
 *
 * @code
 * static bool print(const char *key, const char *value, void *user_data) {
 *   printf("%s = %s\n", key, value);
 *   return true;
 * }
 *
 * app_info_h info = NULL;
 * if (app_info_create("org.example.music", &info) == APP_MANAGER_ERROR_NONE) {
 *   app_info_foreach_metadata(info, print, NULL);
 *   app_info_destroy(info);
 * }
 * @endcode
 */

#include <stdbool.h>
#include <tizen_error.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/** @brief The results of asking for what applications declare. */
typedef enum {
  /** Success. */
  APP_MANAGER_ERROR_NONE = TIZEN_ERROR_NONE,
  /** A required argument is null. */
  APP_MANAGER_ERROR_INVALID_PARAMETER = TIZEN_ERROR_INVALID_PARAMETER,
  /** There was no memory for the answer. */
  APP_MANAGER_ERROR_OUT_OF_MEMORY = TIZEN_ERROR_OUT_OF_MEMORY,
  /** The manifest is there and cannot be read: permissions, size, or no regular file. */
  APP_MANAGER_ERROR_IO_ERROR = TIZEN_ERROR_IO_ERROR,
  /** No manifest declares the application. */
  APP_MANAGER_ERROR_NO_SUCH_APP = -0x01110000 | 0x01,
  /** The manifest was read and is malformed. */
  APP_MANAGER_ERROR_DB_FAILED = -0x01110000 | 0x03
} app_manager_error_e;

/** @brief What one application declares. */
typedef struct app_info_s *app_info_h;

/**
 * @brief Called for each metadata entry of an application.
 * @param[in] metadata_key    The key, lent until the callback returns
 * @param[in] metadata_value  The value, lent likewise; "" when the entry has none
 * @param[in] user_data       What was given to app_info_foreach_metadata()
 * @return True to go on, false to stop the iteration
 */
typedef bool (*app_info_metadata_cb)(const char *metadata_key, const char *metadata_value,
                                     void *user_data);

/**
 * @brief Reads what an application declares.
 * @details On a desktop it is looked for in the tizen-manifest.xml beside the running program or
 *          one folder above, and, when that one does not declare it, in
 *          $NORIX_DESKTOP_APPS/\<app id\>/tizen-manifest.xml.
 * @param[in]  app_id    The application's id
 * @param[out] app_info  The information, released with app_info_destroy(); untouched on failure
 * @return 0 on success, otherwise a negative error value
 * @retval #APP_MANAGER_ERROR_NONE               Success
 * @retval #APP_MANAGER_ERROR_INVALID_PARAMETER  An argument is null
 * @retval #APP_MANAGER_ERROR_NO_SUCH_APP        No manifest declares it, or the id is empty,
 *                                               "." or "..", or holds a slash
 * @retval #APP_MANAGER_ERROR_IO_ERROR           A manifest is there and cannot be read, or has more
 *                                               than 1 MiB
 * @retval #APP_MANAGER_ERROR_DB_FAILED          A manifest is there and malformed
 * @retval #APP_MANAGER_ERROR_OUT_OF_MEMORY      There was no memory for the information
 */
int app_info_create(const char *app_id, app_info_h *app_info);

/**
 * @brief Releases the information.
 * @param[in] app_info  The information, which must not be used afterwards
 * @return 0 on success, otherwise a negative error value
 * @retval #APP_MANAGER_ERROR_NONE               Success
 * @retval #APP_MANAGER_ERROR_INVALID_PARAMETER  @a app_info is null
 */
int app_info_destroy(app_info_h app_info);

/**
 * @brief Calls back for each metadata entry, in the order of the manifest, until one stops it.
 * @details An exception thrown by the callback passes through. The callback must not destroy
 *          @a app_info.
 * @param[in] app_info   The information
 * @param[in] callback   What to call
 * @param[in] user_data  Given to the callback unchanged
 * @return 0 on success, otherwise a negative error value
 * @retval #APP_MANAGER_ERROR_NONE               Success, also without entries and when stopped
 * @retval #APP_MANAGER_ERROR_INVALID_PARAMETER  @a app_info or @a callback is null
 */
int app_info_foreach_metadata(app_info_h app_info, app_info_metadata_cb callback, void *user_data);

/**
 * @brief Gets the application's id.
 * @param[in]  app_info  The information
 * @param[out] app_id    A copy, released with free()
 * @return 0 on success, otherwise a negative error value
 * @retval #APP_MANAGER_ERROR_NONE               Success
 * @retval #APP_MANAGER_ERROR_INVALID_PARAMETER  An argument is null
 * @retval #APP_MANAGER_ERROR_OUT_OF_MEMORY      There was no memory for the copy
 */
int app_info_get_app_id(app_info_h app_info, char **app_id);

/**
 * @brief Gets the name of the program that executes the application.
 * @param[in]  app_info  The information
 * @param[out] exec      A copy, released with free(); "" when the manifest has none
 * @return 0 on success, otherwise a negative error value
 * @retval #APP_MANAGER_ERROR_NONE               Success
 * @retval #APP_MANAGER_ERROR_INVALID_PARAMETER  An argument is null
 * @retval #APP_MANAGER_ERROR_OUT_OF_MEMORY      There was no memory for the copy
 */
int app_info_get_exec(app_info_h app_info, char **exec);

/**
 * @brief Gets the application's name for people to read: its label without a language, else
 *        its first label.
 * @param[in]  app_info  The information
 * @param[out] label     A copy, released with free(); "" when the manifest has none
 * @return 0 on success, otherwise a negative error value
 * @retval #APP_MANAGER_ERROR_NONE               Success
 * @retval #APP_MANAGER_ERROR_INVALID_PARAMETER  An argument is null
 * @retval #APP_MANAGER_ERROR_OUT_OF_MEMORY      There was no memory for the copy
 */
int app_info_get_label(app_info_h app_info, char **label);

/**
 * @brief Gets the id of the package that the application belongs to.
 * @param[in]  app_info  The information
 * @param[out] package   A copy, released with free()
 * @return 0 on success, otherwise a negative error value
 * @retval #APP_MANAGER_ERROR_NONE               Success
 * @retval #APP_MANAGER_ERROR_INVALID_PARAMETER  An argument is null
 * @retval #APP_MANAGER_ERROR_OUT_OF_MEMORY      There was no memory for the copy
 */
int app_info_get_package(app_info_h app_info, char **package);

/**
 * @brief Gets the kind of program that the application is.
 * @param[in]  app_info  The information
 * @param[out] type      A copy, released with free(); "capp" when the manifest names none
 * @return 0 on success, otherwise a negative error value
 * @retval #APP_MANAGER_ERROR_NONE               Success
 * @retval #APP_MANAGER_ERROR_INVALID_PARAMETER  An argument is null
 * @retval #APP_MANAGER_ERROR_OUT_OF_MEMORY      There was no memory for the copy
 */
int app_info_get_type(app_info_h app_info, char **type);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
#endif
