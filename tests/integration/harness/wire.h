// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_INTEGRATION_WIRE_H
#define NORIX_TESTS_INTEGRATION_WIRE_H

#include "assistant/client/Request.h"
#include "support/RawSocket.h"

#include <rpc-port.h>

#include <cstdint>
#include <string>

namespace integration {

// The interface's messages as the bytes that travel, for peers that write them by themselves.
std::string helloFrame(rpc_port_port_type_e type, const std::string &instance,
                       const std::string &sender);
std::string welcomeFrame();
std::string setCallbackFrame();
std::string resultFrame();
std::string requestFrame(const norix::assistant::Request &request);
// What an application answers a request with.
std::string answerFrame(const std::string &appId, std::uint64_t requestId, const std::string &text);

// Where a port of an application listens on this process's desktop.
std::string socketPath(const std::string &appId, const std::string &port = "message");

} // namespace integration

#endif
