// SPDX-License-Identifier: Apache-2.0
//
// A shell of this program's commands. Each line is a process of its own, so that whatever a command
// does, Ctrl-C included, ends that command only.
#include "assistant/cli/LineEditor.h"
#include "assistant/cli/Program.h"
#include "assistant/cli/commands.h"
#include "assistant/launch/exitStatus.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <sys/wait.h>
#include <unistd.h>

namespace norix::assistant::cli {
namespace {

namespace fs = std::filesystem;

constexpr int kCannotStart = 127;
constexpr const char *kSelf = "/proc/self/exe";

// In the user's state folder, if that can be written; the shell works without.
std::string historyFile() {
  const char *state = std::getenv("XDG_STATE_HOME");
  const char *home = std::getenv("HOME");
  fs::path folder;
  if (state != nullptr && *state == '/') {
    folder = state;
  } else if (home != nullptr && *home == '/') {
    folder = fs::path(home) / ".local/state";
  } else {
    return {};
  }
  folder /= "norix-assistant";
  std::error_code failed;
  fs::create_directories(folder, failed);
  return access(folder.c_str(), W_OK) == 0 ? folder / "history" : fs::path();
}

std::vector<char *> pointersTo(std::vector<std::string> &words) {
  std::vector<char *> pointers;
  pointers.reserve(words.size() + 1);
  for (std::string &word : words) {
    pointers.push_back(word.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

// Runs a command to its end; its exit status.
int runCommand(std::vector<std::string> words) {
  words.insert(words.begin(), "norix-assistant");
  const std::vector<char *> arguments = pointersTo(words);
  // The terminal sends Ctrl-C to both; it is meant for the command.
  struct sigaction ignored = {};
  struct sigaction before = {};
  ignored.sa_handler = SIG_IGN;
  sigaction(SIGINT, &ignored, &before);
  const pid_t child = fork();
  if (child == 0) {
    std::signal(SIGINT, SIG_DFL);
    execv(kSelf, arguments.data());
    _exit(kCannotStart);
  }
  int status = 0;
  while (child > 0 && waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  sigaction(SIGINT, &before, nullptr);
  return launch::exitStatus(status);
}

// Lines from a file or a pipe.
std::optional<std::string> readPlainLine() {
  std::string line;
  return std::getline(std::cin, line) ? std::optional<std::string>(line) : std::nullopt;
}

class Shell {
public:
  Shell(const CLI::App &commandLine, Console &console)
      : _completer(commandLine), _console(console) {}

  Ending run() {
    const auto editor = isatty(STDIN_FILENO) == 1
                            ? std::make_unique<LineEditor>(_completer, historyFile())
                            : nullptr;
    while (!_isOver) {
      const std::optional<std::string> line = editor ? editor->read() : readPlainLine();
      if (!line) {
        break;
      }
      execute(*line);
    }
    Ending ending;
    ending.status = _status;
    return ending;
  }

private:
  void execute(const std::string &line) {
    const Words split = splitWords(line, false);
    if (!split.isComplete) {
      _console.say("a quote is open; end it");
      _status = rowOf(Outcome::WrongUsage).status;
    } else if (split.words.empty() || split.words.front().front() == '#') {
      return;
    } else if (split.words.front() == "exit" || split.words.front() == "quit") {
      _isOver = true;
    } else {
      _status = runCommand(split.words.front() == "help" ? std::vector<std::string>{"--help"}
                                                         : split.words);
    }
  }

  const Completer _completer;
  Console &_console;
  int _status = 0;
  bool _isOver = false;
};

} // namespace

void addShell(Program &program) {
  program.add("shell", "Reads commands, with editing, history and completion; exit ends it",
              {"norix-assistant shell", "norix-assistant shell <commands.txt"},
              [&program](Console &console) { return Shell(program.commandLine(), console).run(); });
}

} // namespace norix::assistant::cli
