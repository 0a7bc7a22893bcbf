// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_SOAK_GARBAGE_H
#define NORIX_TESTS_SOAK_GARBAGE_H

#include <random>
#include <string>

namespace soak {

// Where all chance comes from: the same seed, the same decisions.
class Dice {
public:
  explicit Dice(unsigned long seed) : _random(seed) {}

  // From 0 to below this.
  std::size_t below(std::size_t limit) { return static_cast<std::size_t>(_random() % limit); }
  bool chance(unsigned perMille) { return below(1000) < perMille; }
  unsigned long seed() { return _random() & 0xffffffffUL; }

private:
  std::mt19937_64 _random;
};

// What a stranger writes on its two sockets.
struct Speech {
  std::string main;
  std::string callback;
};

// What a well-behaved peer says until its first requests are sent.
Speech properSpeech(const std::string &instance, const std::string &sender);
// What no peer should say.
Speech garbage(Dice &dice, const std::string &instance);
// The beginning of a proper speech, cut anywhere; one socket may say nothing at all.
Speech unfinishedSpeech(Dice &dice, const std::string &instance);

} // namespace soak

#endif
