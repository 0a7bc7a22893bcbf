// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_APPLICATION_SUPPORT_CHILD_H
#define TESTS_APPLICATION_SUPPORT_CHILD_H

#include <string>
#include <sys/types.h>
#include <vector>

/** @brief What a program left behind: how it ended, and what it wrote. */
struct Outcome {
  /** The exit status, or the negated number of the signal that killed the program. */
  int status = 0;
  std::string out;
  std::string err;
};

/** @brief A program run with an environment of exactly the given variables. */
class Child {
public:
  Child(const std::string &program, const std::vector<std::string> &arguments,
        const std::vector<std::string> &environment);
  /** @brief Kills the program when nobody waited for its end. */
  ~Child();
  Child(const Child &) = delete;
  Child &operator=(const Child &) = delete;

  /** @brief Waits until the program has written this line. */
  void awaitLine(const std::string &line);
  void send(int signal) const;
  /** @brief Waits for the program's end. */
  Outcome wait();

private:
  /** Appends what the program writes next; false once it has closed both streams. */
  bool readMore();

  pid_t _pid = -1;
  int _out = -1;
  int _err = -1;
  Outcome _outcome;
};

#endif
