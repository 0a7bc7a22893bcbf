// SPDX-License-Identifier: Apache-2.0
//
// The part of Runner that treats the processes of a scenario badly.
#include "assistant/scenario/Runner.h"
#include "assistant/scenario/judge.h"

namespace norix::assistant::scenario {
namespace {

using Messages = std::vector<report::Message>;
using What = Control::What;

const char *wordOf(What what) {
  switch (what) {
  case What::Connect:
    return "connect";
  case What::Register:
    return "register";
  case What::Unregister:
    return "unregister";
  default:
    return "disconnect";
  }
}

} // namespace

Messages Runner::control(const Control &control, report::Step &reported) {
  return control.target == "application" ? controlApplication(control.what)
                                         : controlSender(control, reported);
}

Messages Runner::controlApplication(What what) {
  Application &application = _stage.application();
  // What it has told last says which process it is.
  (void)_stage.waitUntil([&application] { return application.process() > 0; }, 0.0);
  if (application.process() <= 0) {
    throw std::runtime_error("the process of '" + application.id()
                             + "' is not known: it was not started by norix-assistant");
  }
  switch (what) {
  case What::Kill:
    application.kill();
    (void)_stage.awaitApplicationsEnd();
    _conversation.awaitDisconnection();
    break;
  case What::Stop:
    application.stop();
    break;
  case What::Continue:
    application.resume();
    break;
  default:
    restart();
  }
  return {};
}

void Runner::restart() {
  if (!_stage.application().isLaunched()) {
    throw std::runtime_error("an application that ran before cannot be restarted");
  }
  _stage.application().end();
  (void)_stage.awaitApplicationsEnd();
  _conversation.awaitDisconnection();
  _stage.start(_scenario);
}

Messages Runner::controlSender(const Control &control, report::Step &reported) {
  Sender &sender = _stage.sender(control.target);
  switch (control.what) {
  case What::Kill:
    _conversation.deliver(control.target);
    sender.kill();
    _conversation.forget(control.target);
    return {};
  case What::Stop:
    sender.start();
    sender.stop();
    return {};
  case What::Continue:
    sender.resume();
    return {};
  default:
    const Observed observed = _conversation.execute(control.target, wordOf(control.what));
    reported.output = observed.text;
    return judge(control.expectation, observed, _variables);
  }
}

} // namespace norix::assistant::scenario
