// SPDX-License-Identifier: Apache-2.0
#include "assistant/cli/Program.h"
#include "assistant/cli/Turn.h"
#include "assistant/cli/Watchdog.h"
#include "assistant/cli/commands.h"
#include "assistant/cli/declared.h"
#include "assistant/cli/exchangeOptions.h"
#include "assistant/cli/saveText.h"
#include "assistant/client/MainLoop.h"
#include "assistant/client/words.h"
#include "assistant/launch/Child.h"
#include "assistant/mcp/Bridge.h"
#include "assistant/mcp/clients.h"
#include "assistant/mcp/preview.h"
#include "assistant/scenario/Recorder.h"
#include "assistant/trace/visible.h"

#include <Ecore.h>

#include <cstdlib>
#include <fcntl.h>
#include <map>
#include <memory>
#include <optional>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace norix::assistant::cli {
namespace {

namespace fs = std::filesystem;

struct McpOptions {
  std::vector<std::string> applications;
  std::string senderId = "com.valtren.tizen.norix";
  bool launches = false;
  bool readOnly = false;
  bool consents = false;
  bool checks = false;
  std::string client;
  std::string recording;
};

// A folder is named by a path; anything else is an id, of an application that need not be there
// yet.
mcp::Offered offered(const std::string &name) {
  if (fs::is_directory(name) || name.find('/') != std::string::npos) {
    const launch::Target target = launch::findTarget(name);
    return {target.id, target.folder};
  }
  if (const std::string problem = checkAppId(name); !problem.empty()) {
    throw UsageError(problem);
  }
  return {name, findApplicationFolder(name).value_or(fs::path())};
}

std::vector<mcp::Offered> offeredBy(const McpOptions &options) {
  std::vector<mcp::Offered> all;
  for (const std::string &name : options.applications) {
    all.push_back(offered(name));
  }
  return all;
}

// Its log is the user's to filter: this process silences only its own.
void startApplication(const mcp::Offered &application, const std::string &logFilter) {
  // Those that were started before and have ended.
  while (waitpid(-1, nullptr, WNOHANG) > 0) {
  }
  const launch::Target target = launch::findTarget(application.folder);
  launch::StartOptions options;
  options.mergesOutput = true;
  options.environment = {{"AUL_APPID", target.id},
                         {"NORIX_DESKTOP_APPS", launch::appsFolderOf(target)},
                         {"DLOG_FILTER", logFilter}};
  launch::start(target, options);
}

std::string variable(const char *name) {
  const char *value = std::getenv(name);
  return value == nullptr ? std::string() : value;
}

// Only messages may reach standard output: everything else that writes there reaches standard
// error.
int takeStandardOutput() {
  const int output = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  if (output < 0 || dup2(STDERR_FILENO, STDOUT_FILENO) < 0) {
    throw std::runtime_error("standard output cannot be used");
  }
  return output;
}

/// Writes what the agent had an application do as a scenario, when the session has ended. A session
/// without a request leaves the file as it is: some clients start a bridge only to look at it.
class Recording {
public:
  Recording(const McpOptions &options, const mcp::Offered &application)
      : _file(fs::absolute(options.recording)),
        _folder(application.folder.empty() ? fs::path() : fs::absolute(application.folder)),
        _senderId(options.senderId) {
    if (access(_file.parent_path().c_str(), W_OK) != 0) {
      throw UsageError("--record cannot write into '" + _file.parent_path().string() + "'");
    }
  }

  void add(const Request &request, const Response &response, double seconds) {
    scenario::Recorder::Recorded exchange;
    exchange.sender = _senderId;
    exchange.action = request.actionId;
    exchange.type = request.actionType;
    exchange.params = request.actionParams;
    exchange.outcome = wordOf(response);
    exchange.text = response.text();
    exchange.seconds = seconds;
    _recorder.add(std::move(exchange));
  }

  void save(const Console &console) const {
    if (_recorder.requests() > 0) {
      saveText(_file, _recorder.write(_folder));
      console.say(_file.string() + ": " + std::to_string(_recorder.requests()) + " requests");
    }
  }

private:
  fs::path _file;
  fs::path _folder;
  std::string _senderId;
  scenario::Recorder _recorder;
};

std::optional<Recording> recordingFor(const McpOptions &options,
                                      const std::vector<mcp::Offered> &applications) {
  if (options.recording.empty()) {
    return std::nullopt;
  }
  if (applications.size() != 1) {
    throw UsageError("--record takes one application: a scenario is about one");
  }
  return Recording(options, applications.front());
}

// A client may end the bridge by a signal: what was recorded is saved then too.
Eina_Bool onSignal(void *ending, int type, void *event) {
  static_cast<Ending *>(ending)->outcome = outcomeOfSignal(type, event);
  ecore_main_loop_quit();
  return ECORE_CALLBACK_DONE;
}

Ending serve(const McpOptions &options, Console &console) {
  mcp::Bridge::Settings settings;
  settings.applications = offeredBy(options);
  settings.server.version = NORIX_ASSISTANT_VERSION;
  settings.server.consentGiven = options.consents;
  settings.senderId = options.senderId;
  settings.readOnly = options.readOnly;
  settings.log = [&console](const std::string &line) { console.say(trace::visible(line)); };
  if (options.launches) {
    settings.launch = [filter = variable("DLOG_FILTER")](const mcp::Offered &application) {
      startApplication(application, filter);
    };
  }

  std::map<std::string, std::unique_ptr<Turn>> turns;
  settings.takeTurn = [&turns, &options](const std::string &appId) {
    std::unique_ptr<Turn> &turn = turns[appId];
    turn = Turn::attempt(appId, options.senderId);
    return turn != nullptr;
  };
  settings.releaseTurn = [&turns](const std::string &appId) { turns.erase(appId); };

  std::optional<Recording> recording = recordingFor(options, settings.applications);
  if (recording) {
    settings.answered = [&recording](const Request &request, const Response &response,
                                     double seconds) {
      recording->add(request, response, seconds);
    };
  }

  setenv("AUL_APPID", options.senderId.c_str(), 1);
  setenv("DLOG_FILTER", "*:S", 0);
  const int output = takeStandardOutput();
  const MainLoop loop;
  Ending ending;
  ecore_event_handler_add(ECORE_EVENT_SIGNAL_EXIT, onSignal, &ending);
  ecore_event_handler_add(ECORE_EVENT_SIGNAL_HUP, onSignal, &ending);
  mcp::Bridge(std::move(settings), STDIN_FILENO, output).run();
  if (recording) {
    recording->save(console);
  }
  return ending;
}

Ending check(const McpOptions &options, const Console &console) {
  const mcp::Preview preview = mcp::previewOf(offeredBy(options), options.readOnly);
  for (const std::string &warning : preview.warnings) {
    console.say(warning);
  }
  Ending ending;
  ending.outcome = preview.warnings.empty() ? Outcome::Answered : Outcome::Findings;
  ending.text = preview.text;
  ending.subject.detail = std::to_string(preview.warnings.size()) + " warnings";
  ending.facts = preview.facts;
  return ending;
}

// A client starts the bridge in a folder of its own: relative paths would name nothing there.
Ending printConfig(const McpOptions &options, const Console &console) {
  std::vector<std::string> arguments;
  for (const std::string &name : options.applications) {
    arguments.push_back(fs::is_directory(name) ? fs::canonical(name).string() : name);
  }
  for (const auto &[isGiven, flag] :
       {std::pair{options.launches, "--launch"}, std::pair{options.readOnly, "--read-only"},
        std::pair{options.consents, "--yes"}}) {
    if (isGiven) {
      arguments.emplace_back(flag);
    }
  }
  if (!options.recording.empty()) {
    arguments.insert(arguments.end(), {"--record", fs::absolute(options.recording).string()});
  }
  const mcp::ClientConfig config = mcp::clientConfig(options.client, arguments);
  console.say("for " + config.place);
  Ending ending;
  ending.text = config.text;
  return ending;
}

Ending run(const McpOptions &options, Console &console) {
  if (!options.client.empty()) {
    return printConfig(options, console);
  }
  return options.checks ? check(options, console) : serve(options, console);
}

} // namespace

void addMcp(Program &program) {
  auto options = std::make_shared<McpOptions>();
  CLI::App &command =
      program.add("mcp", "Offers applications to an agent, as tools of the Model Context Protocol",
                  {"norix-assistant mcp build/dev/examples/light --launch",
                   "norix-assistant mcp build/dev/examples/music --check",
                   "norix-assistant mcp build/dev/examples/music --launch --record music.yaml",
                   "norix-assistant mcp build/dev/examples/light --launch --print-config cursor"},
                  [options](Console &console) { return run(*options, console); });
  command.add_option("APP|DIR", options->applications, "Applications, by id or folder")->required();
  command.add_flag("--launch", options->launches,
                   "Start an application when a call needs it; it ends with the bridge");
  command.add_flag("--read-only", options->readOnly, "Offer only what changes nothing");
  command.add_flag("--yes", options->consents,
                   "Execute actions that need confirmation without asking");
  command.add_flag("--check", options->checks, "Print what an agent will see, and what is wrong");
  command.add_option("--print-config", options->client, "Print the configuration of a client")
      ->type_name("CLIENT")
      ->check(CLI::IsMember(mcp::knownClients()));
  command
      .add_option("--record", options->recording,
                  "Write the session as a scenario, for norix-assistant test")
      ->type_name("FILE");
  command.add_option("--id", options->senderId, "The app id to send as")
      ->type_name("APPID")
      ->check(checkAppId, "")
      ->capture_default_str();
}

} // namespace norix::assistant::cli
