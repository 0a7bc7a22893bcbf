// SPDX-License-Identifier: Apache-2.0
//
// Parameters that are drawn by lot from the declared form, and the smallest of them that fail.
#include "assistant/certify/Examination.h"
#include "assistant/certify/Generator.h"
#include "assistant/certify/Verdicts.h"
#include "assistant/certify/checks/checks.h"
#include "assistant/certify/saveScenario.h"
#include "assistant/certify/shrink.h"

#include <chrono>

namespace norix::assistant::certify {
namespace {

constexpr int kInputs = 100;
constexpr int kAttempts = 100;
// What an action may take of the time.
constexpr std::chrono::seconds kToFuzzAnAction(1);

/// Draws parameters for one action.
class Fuzzing {
public:
  Fuzzing(Examination &examination, const ActionUse &use)
      : _examination(examination), _use(use), _generator(examination.order().seed) {}

  void run(Verdicts &verdicts) {
    const auto end = std::chrono::steady_clock::now() + kToFuzzAnAction;
    for (int number = 1; number <= kInputs && std::chrono::steady_clock::now() < end; ++number) {
      const std::string input = _generator.params(_use.action.parameters);
      if (fails(input)) {
        report(input, number, verdicts);
        return;
      }
    }
    verdicts.pass(_use.action.id);
  }

private:
  // Whether it is not answered, or ends the application afterwards.
  bool fails(const std::string &params) {
    _failure = _examination.application().ask(actionRequest(_use.action.id, params));
    if (_failure.isAnswered()) {
      const Reply after = _examination.application().pulse();
      if (after.isAnswered()) {
        return false;
      }
      _failure = {after.kind, "was answered, and the next request for the state " + after.text};
    }
    return true;
  }

  void report(const std::string &input, int number, Verdicts &verdicts) {
    const std::string smallest = shrink(
        input, [this](const std::string &params) { return fails(params); }, kAttempts);
    // For what is said of it.
    const bool isReproduced = fails(smallest);
    const std::string path = saveScenario(_examination, _use.action.id, smallest);
    verdicts.fail("the action '" + _use.action.id + "' with " + smallest + " "
                      + (isReproduced ? _failure.text : "failed, and not when it was tried again")
                      + " (the smallest that was found from number " + std::to_string(number)
                      + " of --seed " + std::to_string(_examination.order().seed)
                      + "; norix-assistant test " + path + " tries it again)",
                  _use.action.id);
  }

  Examination &_examination;
  const ActionUse &_use;
  Generator _generator;
  Reply _failure;
};

} // namespace

void checkParametersFuzz(Examination &examination, Verdicts &verdicts) {
  for (const ActionUse *const use : examination.answeringActions()) {
    Fuzzing(examination, *use).run(verdicts);
  }
}

} // namespace norix::assistant::certify
