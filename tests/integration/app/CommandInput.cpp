// SPDX-License-Identifier: Apache-2.0
#include "integration/app/CommandInput.h"

#include <array>
#include <iostream>
#include <unistd.h>
#include <utility>

namespace integration {

CommandInput::CommandInput(Handler handler)
    : _handler(std::move(handler)),
      _watch(ecore_main_fd_handler_add(STDIN_FILENO, ECORE_FD_READ, onReadable, this, nullptr,
                                       nullptr)) {}

CommandInput::~CommandInput() {
  if (_watch != nullptr) {
    ecore_main_fd_handler_del(_watch);
  }
}

Eina_Bool CommandInput::onReadable(void *data, Ecore_Fd_Handler * /*watch*/) {
  auto *input = static_cast<CommandInput *>(data);
  std::array<char, 4096> chunk{};
  const ssize_t count = read(STDIN_FILENO, chunk.data(), chunk.size());
  if (count <= 0) {
    input->_watch = nullptr;
    ecore_main_loop_quit();
    return ECORE_CALLBACK_CANCEL;
  }

  input->_unread.append(chunk.data(), static_cast<size_t>(count));
  input->executeLines();
  return ECORE_CALLBACK_RENEW;
}

void CommandInput::executeLines() {
  size_t end = 0;
  while ((end = _unread.find('\n')) != std::string::npos) {
    const std::string line = _unread.substr(0, end);
    _unread.erase(0, end + 1);
    _handler(nlohmann::json::parse(line));
  }
}

void report(const nlohmann::json &content) {
  std::cout << content.dump() << std::endl;
}

} // namespace integration
