// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_APPLICATION_SEND_LAUNCH_REQUEST_H
#define PLATFORM_APPLICATION_SEND_LAUNCH_REQUEST_H

#include <app_control.h>

namespace platform::application {

/**
 * @brief Starts the application if it does not run, and hands the request to it.
 * @details Returns when the request is on its way, which can take as long as the application's
 *          create callback. The callback, if there is one, is called once, from the loop.
 * @return An app_control_error_e.
 */
int sendLaunchRequest(const app_control_s &request, app_control_reply_cb callback, void *userData);

/// Answers a request that has arrived. @return An app_control_error_e.
int sendReply(const app_control_s &reply, const app_control_s &request,
              app_control_result_e result);

} // namespace platform::application

#endif
