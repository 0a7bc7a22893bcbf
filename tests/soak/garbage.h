// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_SOAK_GARBAGE_H
#define NORIX_TESTS_SOAK_GARBAGE_H

#include <random>
#include <string>

namespace soak {

// The random numbers: the same seed gives the same decisions.
class Dice {
public:
  explicit Dice(unsigned long seed) : _random(seed) {}

  // From 0 to one less than the bound.
  std::size_t below(std::size_t limit) { return static_cast<std::size_t>(_random() % limit); }
  bool chance(unsigned perMille) { return below(1000) < perMille; }
  unsigned long seed() { return _random() & 0xffffffffUL; }

private:
  std::mt19937_64 _random;
};

// The bytes that a peer writes on its two sockets.
struct Speech {
  std::string main;
  std::string callback;
};

// The bytes of a well-behaved peer, up to its first requests.
Speech properSpeech(const std::string &instance, const std::string &sender);
// Bytes that no peer should send.
Speech garbage(Dice &dice, const std::string &instance);
// The bytes of a well-behaved peer, cut anywhere; one socket may stay silent.
Speech unfinishedSpeech(Dice &dice, const std::string &instance);

} // namespace soak

#endif
