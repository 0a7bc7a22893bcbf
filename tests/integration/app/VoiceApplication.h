// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_INTEGRATION_VOICEAPPLICATION_H
#define NORIX_TESTS_INTEGRATION_VOICEAPPLICATION_H

#include <norix.h>

#include <Ecore.h>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

namespace integration {

// Executes the test's commands with the library, and reports each request that arrives. The
// requests are numbered from 0; a command names one by its number.
class VoiceApplication {
public:
  // Before the library is initialised.
  static void useAllowList(const std::string &path);

  void execute(const nlohmann::json &command);

private:
  int call(const std::string &name, const nlohmann::json &command);
  int complete(const std::string &name, const nlohmann::json &command);
  int arrange(const std::string &name, const nlohmann::json &command);
  void reportActionName(const nlohmann::json &command);
  void received(const char *kind, void *handle, bundle *request);
  int setAction(const std::string &id);

  static void onState(void *handle, void *userData);
  static void onAction(void *handle, bundle *request, void *userData);
  static Eina_Bool onLate(void *userData);

  std::vector<void *> _handles;
  std::optional<std::string> _answerAtOnce;
  bool _deinitialiseAtOnce = false;
  bool _throwAtOnce = false;
  std::string _lateActionId;
};

} // namespace integration

#endif
