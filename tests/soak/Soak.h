// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_SOAK_SOAK_H
#define NORIX_TESTS_SOAK_SOAK_H

#include "assistant/client/MainLoop.h"
#include "soak/Footprint.h"
#include "soak/Strangers.h"
#include "soak/Subject.h"
#include "soak/Tally.h"
#include "soak/garbage.h"
#include "support/TemporaryRuntime.h"

#include <string>
#include <vector>

namespace soak {

/**
 * Two applications under load. The light is never killed, and has to be at the end what it was
 * after a warm-up. The music is killed again and again, and so are the assistants of both. Either
 * side is stopped and continued, and strangers write to the ports whatever they like.
 */
class Soak {
public:
  Soak(unsigned long seed, const std::string &logs);

  // Returns the line with the figures. Throws what does not hold.
  std::string run(std::chrono::seconds duration);

private:
  struct Rest {
    Footprint light;
    std::vector<std::string> files;
  };

  void load(std::chrono::seconds duration);
  void misbehave(Clock::time_point now);
  void strike(Clock::time_point now);
  template <typename Function>
  void forEachSubject(Function function);
  Rest settle();
  void startAssistants();
  void endApplications();
  void requireNoFailure();
  Subject &anyAssistant() { return _assistants.at(_dice.below(_assistants.size())); }
  const char *anyTarget();
  std::string report(std::chrono::seconds duration, const Rest &before, const Rest &after);

  // The order counts: the main loop already looks for the runtime folder.
  support::TemporaryRuntime _runtime;
  norix::assistant::MainLoop _loop;
  std::string _logs;
  Dice _dice;
  Tally &_tally;
  Strangers _strangers;
  Subject _light;
  Subject _music;
  std::vector<Subject> _assistants;
  unsigned long _kills = 0;
  unsigned long _stops = 0;
};

} // namespace soak

#endif
