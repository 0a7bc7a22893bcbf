// SPDX-License-Identifier: Apache-2.0
#include "assistant/cli/Program.h"

#include "assistant/actions/nearest.h"
#include "assistant/cli/commands.h"

#include <algorithm>
#include <new>
#include <sstream>
#include <utility>

namespace norix::assistant::cli {
namespace {

constexpr const char *kDescription =
    "Asks applications, as the voice assistant does, for their state or to execute an action, "
    "and finds out why one does not answer.";

constexpr const char *kExamples = R"(Examples:
  norix-assistant launch build/dev/examples/music
  norix-assistant list --actions
  norix-assistant state org.example.music
  norix-assistant run org.example.music musicVolume volume=40
  norix-assistant doctor build/dev/examples/music

Exit status:
)";

std::string footer() {
  std::ostringstream text;
  text << kExamples;
  int last = -1;
  for (const OutcomeRow &row : allOutcomes()) {
    if (row.status != last) {
      text << (last < 0 ? "" : "\n") << "  " << row.status << "\t" << row.meaning;
    }
    last = row.status;
  }
  return text.str();
}

std::string asFooter(const std::vector<std::string> &examples) {
  std::string text = examples.size() == 1 ? "Example:" : "Examples:";
  for (const std::string &example : examples) {
    text += "\n  " + example;
  }
  return text;
}

std::vector<std::string> namesOf(const CLI::App &app) {
  std::vector<std::string> names;
  for (const CLI::App *command : app.get_subcommands({})) {
    if (!command->get_group().empty()) {
      names.push_back(command->get_name());
    }
  }
  return names;
}

std::string missingCommand(const CLI::App &app) {
  const std::vector<std::string> names = namesOf(app);
  const std::vector<std::string> rest = app.remaining();
  if (!rest.empty()) {
    return "give a command: '" + rest.front() + "' is none"
           + actions::suggestion(rest.front(), names);
  }
  std::string text = "give a command: ";
  for (const std::string &name : names) {
    text += name + (name == names.back() ? "" : name == *(names.end() - 2) ? " or " : ", ");
  }
  return text;
}

// Parsing failed, so the options are not known; what was meant is plain all the same.
bool mentionsJson(int argc, const char *const *argv) {
  return std::find(argv, argv + argc, std::string("--json")) != argv + argc;
}

} // namespace

Program::Program() : _app(kDescription, "norix-assistant") {
  _app.set_version_flag("--version", "norix-assistant " NORIX_ASSISTANT_VERSION);
  _app.require_subcommand(1);
  _app.footer(footer());
  addCommands(*this);
}

CLI::App &Program::add(const std::string &name, const std::string &description,
                       const std::vector<std::string> &examples, Body body) {
  CLI::App *command = _app.add_subcommand(name, description);
  command->footer(asFooter(examples));
  command->callback([this, made = std::move(body)] { _body = made; });
  command->add_flag_callback(
      "--json", [this] { _console.setJson(true); }, "Print the outcome as one line of JSON");
  command->add_flag_callback(
      "--raw", [this] { _console.setRaw(true); },
      "Pass control characters in answers on to the terminal");
  return *command;
}

int Program::run(int argc, const char *const *argv) {
  _console.setJson(mentionsJson(argc, argv));
  try {
    _app.parse(argc, argv);
  } catch (const CLI::ParseError &error) {
    return reject(error);
  }
  return _console.end(execute());
}

// CLI11 throws for --help and --version too.
int Program::reject(const CLI::ParseError &error) {
  if (error.get_exit_code() == 0) {
    std::ostringstream out;
    std::ostringstream ignored;
    (void)_app.exit(error, out, ignored);
    std::string text = out.str();
    text.erase(text.find_last_not_of('\n') + 1);
    _console.setJson(false);
    return _console.end({Outcome::Answered, {}, text});
  }
  Subject subject;
  const bool lacksCommand =
      _app.get_subcommands().empty() && !_app.get_option("--version")->count();
  subject.detail = lacksCommand ? missingCommand(_app) : std::string(error.what());
  return _console.end({Outcome::WrongUsage, subject});
}

Ending Program::execute() {
  Subject subject;
  try {
    return _body(_console);
  } catch (const UsageError &error) {
    subject.detail = error.what();
    return {Outcome::WrongUsage, subject};
  } catch (const std::bad_alloc &) {
    subject.detail = "out of memory";
  } catch (const std::exception &error) {
    subject.detail = error.what();
  }
  return {Outcome::Internal, subject};
}

} // namespace norix::assistant::cli
