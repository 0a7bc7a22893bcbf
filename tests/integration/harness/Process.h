// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_INTEGRATION_PROCESS_H
#define NORIX_TESTS_INTEGRATION_PROCESS_H

#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

namespace integration {

// How long a test waits, in seconds, for what must happen. Nothing takes nearly as long; a test
// that gets here has failed.
inline constexpr double kBound = 20.0;

class FileDescriptor {
public:
  explicit FileDescriptor(int number = -1) : _number(number) {}
  FileDescriptor(FileDescriptor &&other) noexcept;
  FileDescriptor &operator=(FileDescriptor &&other) noexcept;
  ~FileDescriptor();

  int get() const { return _number; }

private:
  int _number;
};

// Another program, with its standard streams in the test's hands. It is killed at the latest when
// this object, or the test, ends.
class Process {
public:
  using Environment = std::map<std::string, std::string>;

  // Starts command[0] with the rest as arguments; the environment is this process's with additions.
  explicit Process(const std::vector<std::string> &command, const Environment &additions = {});
  ~Process();
  Process(Process &&other) noexcept;
  Process &operator=(Process &&) = delete;

  void writeLine(const std::string &line);
  void closeInput();

  // The next line of its standard output. Throws when it ends or the bound passes before.
  std::string readLine(double seconds = kBound);
  // All that is left of its standard output, to the end.
  std::string readAll(double seconds = kBound);
  // What it has written to standard error so far.
  std::string errors() const;

  pid_t pid() const { return _pid; }
  bool isRunning() const;

  // How many files, sockets included, it has open.
  long openFiles() const;

  void signal(int number) const;
  // SIGSTOP; when it returns, the process stands still.
  void stop() const;
  void awaitStop() const;
  // Its exit status, or minus the signal that ended it. Throws when the bound passes before.
  int wait(double seconds = kBound);

private:
  bool readMore(double seconds);
  // Whether it ends before the bound passes.
  bool ends(double seconds) const;

  std::string _name;
  FileDescriptor _input;
  FileDescriptor _output;
  FileDescriptor _errors;
  FileDescriptor _ended;
  pid_t _pid = -1; // None, or one that was waited for already.
  std::string _unread;
};

} // namespace integration

#endif
