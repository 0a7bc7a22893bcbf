// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_SCENARIO_FRAMES_H
#define NORIX_ASSISTANT_SCENARIO_FRAMES_H

#include "assistant/launch/sockets.h"

#include <nlohmann/json.hpp>

#include <string>
#include <utility>
#include <vector>

namespace norix::assistant::scenario {

/// One end of a connection between two processes of this program that send each other JSON values.
/// They travel as CBOR with their length before them, so texts may hold any bytes.
class Frames {
public:
  using Json = nlohmann::ordered_json;

  Frames() = default;
  explicit Frames(launch::Descriptor socket) : _socket(std::move(socket)) {}

  /// Two ends of a connection. @throw std::runtime_error
  static std::pair<Frames, Frames> pair();

  int descriptor() const { return _socket.get(); }

  /// Waits until the other side has taken it. False when there is no other side any more.
  bool send(const Json &value) const;
  /// What has arrived completely, without waiting for more.
  std::vector<Json> receive();
  /// Whether the other side has closed the connection, or ended.
  bool hasEnded() const { return _hasEnded; }

private:
  launch::Descriptor _socket;
  std::string _begun;
  bool _hasEnded = false;
};

} // namespace norix::assistant::scenario

#endif
