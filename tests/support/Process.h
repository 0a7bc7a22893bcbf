// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_SUPPORT_PROCESS_H
#define NORIX_TESTS_SUPPORT_PROCESS_H

#include "support/FileDescriptor.h"
#include "support/Outcome.h"

#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

namespace support {

/// How long a test waits for what must happen, in seconds. Far more than anything takes: a test
/// that reaches it has failed.
inline constexpr double kBound = 20.0;

/// A child process, with pipes to its standard input and output. It is killed at the latest when
/// this object, or the test, ends.
class Process {
public:
  using Environment = std::map<std::string, std::string>;

  /// Starts it with exactly these variables, "NAME=value" each.
  static Process withVariables(const std::vector<std::string> &command,
                               std::vector<std::string> variables);

  /// Starts command[0] with the rest as arguments; the environment is this process's with
  /// additions.
  explicit Process(const std::vector<std::string> &command, const Environment &additions = {});
  ~Process();
  Process(Process &&other) noexcept;
  Process &operator=(Process &&) = delete;

  void writeLine(const std::string &line);
  void closeInput();

  /// The next line of its standard output. Throws when it ends or the bound passes before.
  std::string readLine(double seconds = kBound);
  /// Waits until it has written this line; nothing of its output is taken.
  void awaitLine(const std::string &line);
  /// The rest of its standard output, to the end.
  std::string readAll(double seconds = kBound);
  /// What it has written to standard error so far.
  std::string errors() const;

  pid_t pid() const { return _pid; }
  bool isRunning() const;

  /// How many file descriptors it has open.
  long openFiles() const;

  void signal(int number) const;
  /// Sends SIGSTOP, and returns when the process has stopped.
  void stop() const;
  void awaitStop() const;
  /// Its exit status, or minus the signal that ended it. Throws when the bound passes before.
  int wait(double seconds = kBound);
  /// Closes its input and lets it run to its end.
  Outcome finish();

private:
  Process() = default;
  void start(std::vector<std::string> arguments, std::vector<std::string> environment);
  bool readMore(double seconds);
  /// Whether it ends before the bound passes.
  bool ends(double seconds) const;

  std::string _name;
  FileDescriptor _input;
  FileDescriptor _output;
  FileDescriptor _errors;
  FileDescriptor _ended;
  pid_t _pid = -1; // -1 once it has been waited for.
  std::string _unread;
};

/// Waits for a child without a bound. @return Its exit status, or minus the signal that ended it.
int awaitEnd(pid_t child);

} // namespace support

#endif
