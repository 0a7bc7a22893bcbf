// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_TRACE_FINDINGS_H
#define NORIX_ASSISTANT_TRACE_FINDINGS_H

#include "assistant/trace/Event.h"
#include "assistant/trace/Finding.h"

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace norix::assistant::trace {

/// Draws conclusions from the events of one application: its mistakes, each said once per cause.
class Findings {
public:
  /// @param appId  the application, for the sentences
  explicit Findings(std::string appId) : _appId(std::move(appId)) {}

  /// What an event reveals. Events come in the order in which they happened.
  std::vector<Finding> see(const Event &event);

  /// The actions that are registered now, `getAppContext` for the state.
  const std::set<std::string> &registered() const { return _registered; }
  /// Whether norix_initialize() has succeeded, and norix_deinitialize() was not called since.
  bool isInitialised() const { return _isInitialised; }
  /// Whether norix_initialize() has failed, and never succeeded.
  bool hasFailed() const { return _hasFailed; }

private:
  struct Request {
    std::int64_t number = 0;
    std::string action;
    std::uint64_t received = 0;
    bool isState = false;
    bool wasEntered = false;
    bool isAnswered = false;
    bool hasTimedOut = false;
    bool isDeferred = false;
    bool isHeldReported = false;
  };

  void seeCall(const Event &event);
  void seeInitialize(const Event &event);
  void seeEarlyCall(const std::string &function, int result);
  void seeThread(const Event &event);
  void seeRegistration(const Event &event);
  void seeDeinitialize(const Event &event);
  void seeAnswer(const Event &event);
  void judgeAnswer(const Event &event, Request &request);
  void seeReceived(const Event &event);
  void seeEntered(const Event &event);
  void seeLeft(const Event &event);
  void seeHeld(const Event &event);
  void seeLoopHeld(const Event &event);
  void seeLentBundle(const Event &event);
  void seeSignal(const Event &event);
  void seeExit(const Event &event);
  void seeLog(const Event &event);
  void seeTimeOut(const Event &event);
  void seeRefusal(const std::string &sender);
  void add(const std::string &word, const std::string &sentence);
  void addOnce(const std::string &word, const std::string &about, const std::string &sentence);
  Request *find(std::int64_t number);

  std::string _appId;
  std::vector<Finding> _found;
  std::set<std::string> _said;
  bool _isInitialised = false;
  bool _hasFailed = false;
  int _failure = 0;
  std::set<std::string> _registered;
  std::string _allowList;
  // The latest requests by number, and which of them had a handle last.
  std::map<std::int64_t, Request> _requests;
  std::map<std::string, std::int64_t> _handles;
  std::int64_t _latest = 0;
};

} // namespace norix::assistant::trace

#endif
