// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_SCENARIO_SENDERPROCESS_H
#define NORIX_ASSISTANT_SCENARIO_SENDERPROCESS_H

#include "assistant/client/Client.h"
#include "assistant/scenario/Frames.h"

#include <Ecore.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace norix::assistant::scenario {

/// What runs in the process of a sender: does what the other end of the connection says, and tells
/// it what happens.
///
/// Every command, `{"do": WORD, "serial": NUMBER, …}`, is answered with `{"done": NUMBER, "t": …}`
/// and, when it failed, `outcome` and `says`. Without being asked come `answered`, a request's id
/// with `outcome` and `text`; `ended` and `malformed`, what happened. `t` is CLOCK_MONOTONIC in
/// nanoseconds.
class SenderProcess {
public:
  SenderProcess(std::string appId, Frames frames)
      : _appId(std::move(appId)), _frames(std::move(frames)) {}

  /// Returns when the other end is closed.
  void run();

private:
  using Json = Frames::Json;

  static Eina_Bool onCommand(void *self, Ecore_Fd_Handler *handler);

  void execute(const Json &command);
  void connect(std::uint64_t serial);
  void send(const Json &command);
  Client::Handlers handlers();
  void onAnswered(const Answer &answer) const;
  void onEnded(const Error &error);
  void tell(Json message) const;
  void settle();
  void tellDone(std::uint64_t serial) const;
  void tellFailed(std::uint64_t serial, const Error &error) const;

  std::string _appId;
  Frames _frames;
  std::unique_ptr<Client> _client;
  std::unique_ptr<Client> _ended;
  // The serial number of the command that connects.
  std::optional<std::uint64_t> _connecting;
};

} // namespace norix::assistant::scenario

#endif
