// SPDX-License-Identifier: Apache-2.0
//
// What the examples in the documentation of norix.hpp take for granted.
#ifndef NORIX_TESTS_UNIT_CPP_EXAMPLECONTEXT_H
#define NORIX_TESTS_UNIT_CPP_EXAMPLECONTEXT_H

#include <norix/json.hpp>

#include <optional>
#include <string>
#include <thread>
#include <vector>

struct Lamp {
  bool isOn() const;
  void switchOff();
  nlohmann::json toJson() const;
};

struct Player {
  std::string play();
  std::string pause();
  std::string loadNext();
  std::string setVolume(int volume);
  std::string title() const;
  int volume() const;
};

struct Music {
  void drive(norix::Assistant &assistant);
  int run();
};

enum class Repeat { Off, All };

// An example may have a main(), and the tests have one already.
#define main exampleMain

#endif
