// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_INTEGRATION_PEER_STEPS_H
#define NORIX_TESTS_INTEGRATION_PEER_STEPS_H

namespace integration {

// One exchange, as far as the assistant has come with it.
enum class AssistantStep {
  MainConnected,
  HalfHelloSent,
  HelloSent,
  CallbackConnected,
  CallbackHelloSent,
  Welcomed,
  HalfSetCbSent,
  SetCbSent,
  ResultRead,
  HalfRequestSent,
  RequestSent,
  Answered, // The application has answered; nothing is read yet.
  HalfAnswerRead,
  AnswerRead,
  Count
};

// The same exchange, as far as the application has come with it.
enum class ApplicationStep {
  MainAccepted,
  BothAccepted,
  HellosRead,
  HalfWelcomeSent,
  MainWelcomed,
  BothWelcomed,
  SetCbRead,
  HalfResultSent,
  ResultSent,
  RequestRead,
  HalfAnswerSent,
  AnswerSent,
  Count
};

} // namespace integration

#endif
