// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_SOAK_STRANGERS_H
#define NORIX_TESTS_SOAK_STRANGERS_H

#include "soak/Subject.h"
#include "soak/garbage.h"
#include "support/RawSocket.h"

#include <memory>
#include <string>
#include <vector>

namespace soak {

// Hostile peers: raw sockets connected to an application's port.
class Strangers {
public:
  // `dice` decides what is sent. The sizes of the pieces depend on the sockets too, and come from
  // dice of their own, so that a seed gives the same decisions.
  explicit Strangers(Dice &dice) : _dice(dice), _pieces(dice.seed()) {}

  // Each connects to the port of this application, if it listens.
  void sendGarbage(const std::string &appId);
  void leaveHalfOpen(const std::string &appId);
  // One at a time: it asks as fast as it can, and reads nothing.
  void askWithoutReading(const std::string &appId);

  // Writes what the sockets take, and closes those whose time is over.
  void tick(Clock::time_point now);
  void leave() { _strangers.clear(); }

  unsigned long garbagePeers() const { return _garbagePeers; }
  unsigned long halfOpen() const { return _halfOpen; }
  unsigned long deaf() const { return _deaf; }
  // How many peers that do not read were disconnected by the application.
  unsigned long deafDropped() const { return _deafDropped; }
  bool isAnybodyDeaf() const;

private:
  struct Line {
    std::unique_ptr<support::RawSocket> socket;
    std::string unsent;
  };
  struct Stranger {
    Line main;
    Line callback;
    Clock::time_point leaves;
    bool asksOn;
  };

  bool connect(const std::string &appId, Speech speech, Clock::duration stay, bool asksOn);
  bool speak(Line &line);
  bool speak(Stranger &stranger);

  Dice &_dice;
  Dice _pieces;
  std::vector<Stranger> _strangers;
  unsigned long _number = 0;
  unsigned long _garbagePeers = 0;
  unsigned long _halfOpen = 0;
  unsigned long _deaf = 0;
  unsigned long _deafDropped = 0;
};

} // namespace soak

#endif
