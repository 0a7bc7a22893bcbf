// SPDX-License-Identifier: Apache-2.0
#include "Program.h"

#include <utility>

namespace rpc_test {
namespace {

std::vector<std::string> commandOf(const std::string &role, std::vector<std::string> launcher) {
  launcher.emplace_back(RPC_PORT_PEER);
  launcher.push_back(role);
  return launcher;
}

} // namespace

Program::Program(const std::string &role, std::vector<std::string> launcher)
    : _process(std::in_place, commandOf(role, std::move(launcher))),
      _isReady(_process->readLine() == "ready") {}

} // namespace rpc_test
