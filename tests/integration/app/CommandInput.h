// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_INTEGRATION_COMMANDINPUT_H
#define NORIX_TESTS_INTEGRATION_COMMANDINPUT_H

#include <Ecore.h>

#include <functional>
#include <nlohmann/json.hpp>
#include <string>

namespace integration {

// Standard input on the main loop, one JSON object a line; its end ends the loop.
class CommandInput {
public:
  using Handler = std::function<void(const nlohmann::json &command)>;

  explicit CommandInput(Handler handler);
  ~CommandInput();
  CommandInput(const CommandInput &) = delete;
  CommandInput &operator=(const CommandInput &) = delete;

private:
  static Eina_Bool onReadable(void *data, Ecore_Fd_Handler *watch);
  void executeLines();

  Handler _handler;
  std::string _unread;
  Ecore_Fd_Handler *_watch;
};

// Writes one report to standard output.
void report(const nlohmann::json &content);

} // namespace integration

#endif
