// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CERTIFY_EXAMINATION_H
#define NORIX_ASSISTANT_CERTIFY_EXAMINATION_H

#include "assistant/actions/Declarations.h"
#include "assistant/certify/Application.h"
#include "assistant/certify/Load.h"
#include "assistant/certify/OrdinaryUse.h"
#include "assistant/certify/RuntimeFolder.h"
#include "assistant/launch/Target.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace norix::assistant::certify {

/// What is to be examined, and how.
struct Order {
  /// The application's folder, its manifest, or its id.
  std::string application;
  std::vector<std::string> arguments;
  /// After how many seconds the library gives up waiting for an answer.
  double completionTimeout = 3.0;
  /// Whether actions that are declared as destructive are executed.
  bool executesDestructive = false;
  /// For what is drawn by lot.
  std::uint64_t seed = 1;
  /// Where scenarios of parameters that fail are saved.
  std::string folderForScenarios = ".";
};

/// What a check needs is not there; what() says what, as a sentence.
class NotPossible : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// What the checks have in common: the application's folder, a process of it, and what came of
/// using it as users do. Each is found, started or done when a check first needs it, so that every
/// check can be done alone.
class Examination {
public:
  explicit Examination(Order order);

  const Order &order() const { return _order; }
  const RuntimeFolder &folder() const { return _folder; }

  /// The application as its manifest declares it. @throw NotPossible
  const launch::Target &target();
  /// Why there is none; empty when there is one.
  std::string whyNoTarget();
  /// The file of declarations; nothing when there is none. @throw NotPossible
  const std::optional<actions::Reading> &reading();
  /// What is declared. @throw NotPossible
  const actions::Declarations &declared();

  /// How the application is to be started.
  launch::LaunchOptions launchOptions() const;
  /// Another process of the application; the common one ends. @throw NotPossible
  std::unique_ptr<Application> start(const launch::LaunchOptions &options);
  std::unique_ptr<Application> start() { return start(launchOptions()); }
  /// The common process, anew when it has ended. @throw NotPossible
  Application &application();
  /// Ends the common process.
  void endApplication() { _application.reset(); }

  /// What came of using it as users do. @throw NotPossible
  const OrdinaryUse &ordinaryUse();
  /// The actions that answered all that is declared of them, to examine further. @throw NotPossible
  std::vector<const ActionUse *> answeringActions();
  /// What came of many requests. @throw NotPossible
  const Load &load();

  /// Ends everything that runs, for good, and removes the folder: to be called from another thread
  /// before it ends the process.
  void abandon();
  /// Returns unless the examination was abandoned: then there is nothing left to do or to say.
  void waitIfAbandoned() const;

private:
  void findTarget();

  const Order _order;
  const RuntimeFolder _folder;
  bool _hasLooked = false;
  std::optional<launch::Target> _target;
  std::string _whyNoTarget;
  bool _hasRead = false;
  std::optional<actions::Reading> _reading;
  std::unique_ptr<Application> _application;
  std::optional<OrdinaryUse> _ordinaryUse;
  std::optional<Load> _load;
  std::atomic<bool> _isAbandoned{false};
  // Held while a process of the application starts.
  std::timed_mutex _starting;
};

} // namespace norix::assistant::certify

#endif
