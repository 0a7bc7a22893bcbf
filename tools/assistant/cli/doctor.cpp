// SPDX-License-Identifier: Apache-2.0
#include "assistant/actions/Declarations.h"
#include "assistant/cli/Listener.h"
#include "assistant/cli/Program.h"
#include "assistant/cli/commands.h"
#include "assistant/cli/declared.h"
#include "assistant/cli/exchangeOptions.h"
#include "assistant/launch/Target.h"
#include "assistant/launch/registered.h"
#include "assistant/trace/checks.h"
#include "assistant/trace/visible.h"

#include <cerrno>
#include <cstring>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace norix::assistant::cli {
namespace {

namespace fs = std::filesystem;

struct DoctorOptions {
  std::string target;
  std::string senderId = ExchangeOptions().senderId;
  std::string allowList = trace::kDefaultAllowList;
};

/// Looks at an application without starting it, and at what it would find on this machine.
class Doctor {
public:
  Doctor(const DoctorOptions &options, const Console &console)
      : _options(options), _console(console) {
    _ending.subject.app = options.target;
    _ending.facts["findings"] = Json::array();
  }

  Ending run() {
    checkRuntimeFolder();
    checkApplication();
    add(trace::checkAllowList(_options.allowList, _options.senderId));
    if (_errors > 0) {
      _ending.outcome = Outcome::Findings;
      _ending.subject.detail =
          std::to_string(_errors) + (_errors == 1 ? " mistake" : " mistakes") + " found";
    } else if (_ending.facts["findings"].empty()) {
      addLine(_console.styled(Console::Style::Good, "nothing wrong found"));
    }
    return std::move(_ending);
  }

private:
  // What an application needs to listen at all.
  void checkRuntimeFolder() {
    const fs::path folder = portsFolder().parent_path();
    struct stat status = {};
    const bool isOwn = portsFolder().filename() == "rpc-port";
    if (stat(folder.c_str(), &status) != 0) {
      addError("no-runtime-folder", "'" + folder.string() + "': " + std::strerror(errno)
                                        + "; make it, or unset XDG_RUNTIME_DIR");
    } else if (isOwn && status.st_uid != geteuid()) {
      addError("runtime-folder-of-another",
               "'" + folder.string()
                   + "' belongs to another user; set XDG_RUNTIME_DIR to a folder of your own");
    } else if (isOwn && (status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
      addError("runtime-folder-open",
               "'" + folder.string() + "' can be written by others; chmod 700 it");
    }
  }

  void checkApplication() {
    try {
      const launch::Target target = launch::findTarget(folderOrName());
      _ending.subject.app = target.id;
      _ending.facts["app"] = target.id;
      add(trace::checkSdkVersion(target.metadata, target.manifest));
      checkDeclarations(target.folder);
    } catch (const launch::LaunchError &error) {
      addError(error.word(), error.what());
    }
  }

  // An application that runs has told where its folder is.
  std::string folderOrName() const {
    const bool isId = checkAppId(_options.target).empty() && !fs::exists(_options.target);
    const auto folder = isId ? findApplicationFolder(_options.target) : std::nullopt;
    return folder ? folder->string() : _options.target;
  }

  void checkDeclarations(const fs::path &folder) {
    const std::optional<actions::Reading> reading = actions::read(folder);
    if (!reading) {
      addWarning("no-declarations", "'" + (folder / actions::kFile).string()
                                        + "' is not there: nothing can complete or check what is "
                                          "asked; norix-actions(5) says what to write");
      return;
    }
    for (const actions::Finding &finding : reading->findings) {
      addDeclaration(folder / actions::kFile, finding);
    }
    if (reading->isUsable()) {
      checkDrift(reading->declarations);
    }
  }

  // Against what the application has registered, if it runs and was launched with the probe.
  void checkDrift(const actions::Declarations &declarations) {
    const auto registered = launch::registeredActions(_ending.subject.app);
    if (!registered) {
      return;
    }
    const launch::Drift drift = launch::compare(declarations, *registered);
    for (const std::string &id : drift.notRegistered) {
      addWarning("action-not-registered", "the action '" + id
                                              + "' is declared and not registered; register it, or "
                                                "take it out of the declarations");
    }
    for (const std::string &id : drift.notDeclared) {
      addWarning("action-not-declared",
                 "the action '" + id + "' is registered and not declared; declare it");
    }
  }

  void addDeclaration(const fs::path &file, const actions::Finding &finding) {
    const bool isError = finding.severity == actions::Severity::Error;
    add(isError, "declaration",
        file.string() + ":" + std::to_string(finding.position.line) + ":"
            + std::to_string(finding.position.column) + ": " + finding.text);
    Json &added = _ending.facts["findings"].back();
    added["file"] = file.string();
    added["line"] = finding.position.line;
    added["column"] = finding.position.column;
    added["pointer"] = finding.pointer;
  }

  void add(const std::vector<trace::Finding> &findings) {
    for (const trace::Finding &finding : findings) {
      addError(finding.word, finding.sentence);
    }
  }

  void addError(const std::string &word, const std::string &text) { add(true, word, text); }
  void addWarning(const std::string &word, const std::string &text) { add(false, word, text); }

  void add(bool isError, const std::string &word, const std::string &text) {
    _errors += isError ? 1 : 0;
    const std::string severity = isError ? "error" : "warning";
    _ending.facts["findings"].push_back(
        {{"finding", word}, {"severity", severity}, {"sentence", text}});
    addLine(_console.styled(isError ? Console::Style::Bad : Console::Style::Plain, severity) + ": "
            + trace::visible(text) + " [" + word + "]");
  }

  void addLine(const std::string &line) {
    _ending.text = (_ending.text ? *_ending.text + "\n" : "") + line;
  }

  const DoctorOptions &_options;
  const Console &_console;
  Ending _ending;
  int _errors = 0;
};

} // namespace

void addDoctor(Program &program) {
  auto options = std::make_shared<DoctorOptions>();
  CLI::App &command = program.add(
      "doctor", "Looks for mistakes that keep an application silent, without starting it",
      {"norix-assistant doctor build/dev/examples/music",
       "norix-assistant doctor org.example.music"},
      [options](Console &console) {
        Ending ending = Doctor(*options, console).run();
        ending.hasColours = true;
        return ending;
      });
  command
      .add_option("FOLDER|APP", options->target,
                  "The application's folder, its manifest, or its app id")
      ->required();
  command.add_option("--id", options->senderId, "The app id that the allow list has to name")
      ->type_name("APPID")
      ->check(checkAppId, "")
      ->capture_default_str();
  command
      .add_option("--allow-list", options->allowList, "The allow list that the application reads")
      ->type_name("FILE")
      ->capture_default_str();
}

} // namespace norix::assistant::cli
