// SPDX-License-Identifier: Apache-2.0
#include "assistant/cli/CommandLine.h"

#include "assistant/cli/parameters.h"
#include "assistant/trace/visible.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <manifest/AppId.h>
#include <string>
#include <vector>

namespace norix::assistant::cli {
namespace {

constexpr const char *kDescription =
    "Asks applications, as the voice assistant does, for their state or to execute an action.";

constexpr const char *kFooter = R"(Examples:
  norix-assistant launch build/dev/examples/music
  norix-assistant state org.example.music
  norix-assistant run org.example.music musicVolume volume=40
  norix-assistant run org.example.music musicVolume --params '{"volume":40}'

Exit status:
  0  the application answered          5  no answer before the deadline
  1  the answer is a failure           6  the application went away
  2  wrong usage                       7  the answer is malformed
  3  cannot connect                    8  cannot launch the application
  4  refused by the allow list         9  anything else)";

// Beyond a day somebody has confused the unit.
constexpr double kShortestDeadline = 0.001;
constexpr double kLongestDeadline = 86400.0;

std::string checkAppId(const std::string &id) {
  return platform::application::isUsableAppId(id)
             ? std::string()
             : "'" + trace::visible(id)
                   + "' is no app id: 1 to 255 bytes, not '.' or '..', without "
                   + "'/' and control characters";
}

std::string describe(const CLI::App *app, const CLI::Error &error) {
  const bool lacksCommand = error.get_name() == "RequiredError" && app->get_subcommands().empty();
  const std::string problem =
      lacksCommand ? "give a command: state, run or launch" : std::string(error.what());
  return "norix-assistant: " + problem + "\nRun with --help for more information.\n";
}

class CommandLine {
public:
  CommandLine();
  Parsed parse(int argc, const char *const *argv);

private:
  void addState();
  void addRun();
  void addLaunch();
  void addExchangeOptions(CLI::App &command);
  void finish();

  Options _options;
  std::vector<std::string> _pairs;
  CLI::App _app{kDescription, "norix-assistant"};
  CLI::Option *_params = nullptr;
};

CommandLine::CommandLine() {
  _app.set_version_flag("--version", "norix-assistant " NORIX_ASSISTANT_VERSION);
  _app.require_subcommand(1);
  _app.failure_message(describe);
  _app.footer(kFooter);
  addState();
  addRun();
  addLaunch();
}

void CommandLine::addState() {
  CLI::App *state = _app.add_subcommand("state", "Asks an application for its state");
  addExchangeOptions(*state);
  state->footer("Example:\n  norix-assistant state org.example.light");
  state->callback([this] { _options.command = Command::State; });
}

void CommandLine::addRun() {
  CLI::App *run = _app.add_subcommand("run", "Has an application execute an action");
  addExchangeOptions(*run);
  run->add_option("ACTION", _options.actionId, "The id of the action")->required();
  run->add_option("KEY=VALUE", _pairs,
                  "Parameters, sent as one JSON object; a value that is a JSON number, true, false "
                  "or null stays so, any other is a string");
  _params = run->add_option("--params", _options.actionParams, "The parameters, sent as they are")
                ->type_name("TEXT");
  run->add_option("--type", _options.actionType, "The type of the action")->type_name("TEXT");
  run->footer("Examples:\n"
              "  norix-assistant run org.example.light lightOn\n"
              "  norix-assistant run org.example.music musicVolume volume=40");
  run->callback([this] { _options.command = Command::Run; });
}

void CommandLine::addLaunch() {
  CLI::App *launch = _app.add_subcommand(
      "launch", "Starts an application from its folder, and says what it does wrong");
  launch
      ->add_option("APP", _options.target,
                   "The folder with the application's tizen-manifest.xml, that file, or an app id "
                   "that names "
                   "a folder in $NORIX_DESKTOP_APPS")
      ->required();
  launch->add_flag("--trace", _options.traces, "Shows what happens in the application");
  launch->add_flag("--json", _options.isJson,
                   "Events and findings as JSON lines on standard output; the application's own "
                   "output goes to standard error");
  launch->add_flag("--strict", _options.isStrict, "Ends with status 10 when there were findings");
  CLI::Option *wait = launch->add_flag("--wait", _options.waitsForListening,
                                       "Returns when the application listens, and leaves it "
                                       "running");
  launch->add_flag("--stop", _options.stops, "Ends an application that was launched")
      ->excludes(wait);
  launch
      ->add_option("--completion-timeout", _options.completionTimeout,
                   "After how long the library gives up waiting for an answer, instead of 30")
      ->type_name("SECONDS")
      ->check(CLI::Range(kShortestDeadline, kLongestDeadline));
  launch->add_option("ARGUMENT", _options.arguments, "Passed on to the application; after --");
  launch->footer("Examples:\n"
                 "  norix-assistant launch build/dev/examples/light\n"
                 "  NORIX_DESKTOP_APPS=~/apps norix-assistant launch org.example.light");
  launch->callback([this] { _options.command = Command::Launch; });
}

void CommandLine::addExchangeOptions(CLI::App &command) {
  command.add_option("APP", _options.appId, "The application's id")
      ->required()
      ->check(checkAppId, "");
  command.add_option("--deadline", _options.deadline, "How long to wait for the answer")
      ->type_name("SECONDS")
      ->check(CLI::Range(kShortestDeadline, kLongestDeadline))
      ->capture_default_str();
  command.add_option("--id", _options.senderId, "The app id to send as")
      ->type_name("APPID")
      ->check(checkAppId, "")
      ->capture_default_str();
}

// What one option alone cannot check.
void CommandLine::finish() {
  if (_options.command != Command::Run) {
    return;
  }
  if (*_params && !_pairs.empty()) {
    throw ParameterError("give either --params or KEY=VALUE pairs, not both");
  }
  if (!*_params) {
    _options.actionParams = toJsonObject(_pairs);
  }
}

Parsed CommandLine::parse(int argc, const char *const *argv) {
  try {
    _app.parse(argc, argv);
    finish();
  } catch (const CLI::ParseError &error) {
    const bool isHelp = _app.exit(error) == 0;
    return {std::nullopt, isHelp ? ExitStatus::Answered : ExitStatus::WrongUsage};
  } catch (const ParameterError &error) {
    std::cerr << "norix-assistant: " << error.what() << '\n';
    return {std::nullopt, ExitStatus::WrongUsage};
  }
  return {_options, ExitStatus::Answered};
}

} // namespace

Parsed parseCommandLine(int argc, const char *const *argv) {
  return CommandLine().parse(argc, argv);
}

} // namespace norix::assistant::cli
