// SPDX-License-Identifier: Apache-2.0
#include "assistant/mcp/Bridge.h"

#include <Ecore.h>

#include <sys/stat.h>
#include <utility>

namespace norix::assistant::mcp {
namespace {

// A line holds a request, and its parameters become a bundle of at most 64 MiB.
constexpr std::size_t kLineBytes = std::size_t{16} << 20U;

constexpr double kWatchSeconds = 0.5;
constexpr double kEndingSeconds = 0.02;

// Changes whenever the file is written, replaced, made or removed.
std::string stampOf(const Offered &application) {
  const std::filesystem::path path = application.folder / actions::kFile;
  struct stat status = {};
  if (application.folder.empty() || stat(path.c_str(), &status) != 0) {
    return "none";
  }
  return std::to_string(status.st_ino) + ' ' + std::to_string(status.st_size) + ' '
         + std::to_string(status.st_mtim.tv_sec) + '.' + std::to_string(status.st_mtim.tv_nsec);
}

std::vector<std::string> stampsOf(const std::vector<Offered> &applications) {
  std::vector<std::string> stamps;
  stamps.reserve(applications.size());
  for (const Offered &application : applications) {
    stamps.push_back(stampOf(application));
  }
  return stamps;
}

Catalogue currentCatalogue(const Bridge::Settings &settings) {
  return makeCatalogue(readDeclarations(settings.applications, settings.log), settings.readOnly);
}

} // namespace

std::vector<DeclaredApplication>
readDeclarations(const std::vector<Offered> &applications,
                 const std::function<void(const std::string &)> &log) {
  std::vector<DeclaredApplication> declared;
  for (const Offered &application : applications) {
    std::optional<actions::Declarations> declarations;
    if (!application.folder.empty()) {
      try {
        declarations = actions::load(application.folder);
      } catch (const actions::DeclarationError &error) {
        log(error.what());
      }
    }
    if (!declarations) {
      log("'" + application.appId + "' declares no actions (" + actions::kFile
          + " in its folder): only its state is offered");
    }
    declared.push_back({application.appId, std::move(declarations)});
  }
  return declared;
}

Bridge::Road::Road(Link::Settings settings)
    : link(std::move(settings)),
      lane({}, [this](const Work &work, Done done) { link.run(work, std::move(done)); }) {}

Bridge::Bridge(Settings settings, int input, int output)
    : _settings(std::move(settings)), _output(output, [] { ecore_main_loop_quit(); }),
      _server(_settings.server, surroundings(), currentCatalogue(_settings)),
      _input(input,
             LineReader(kLineBytes, {[this](std::string_view line) { _server.receive(line); },
                                     [this] { _server.refuseLongLine(kLineBytes); }}),
             [this] { inputEnded(); }),
      _stamps(stampsOf(_settings.applications)) {
  watchDeclarations();
}

Server::Surroundings Bridge::surroundings() {
  return {[this](const Json &message) { _output.writeLine(toLine(message)); }, _settings.log,
          [this](const std::string &appId, const Work &work, Done done) {
            return roadTo(appId).lane.submit(work, std::move(done));
          },
          [this](const std::string &appId, Server::Ticket ticket) {
            roadTo(appId).lane.cancel(ticket);
          }};
}

Bridge::Road &Bridge::roadTo(const std::string &appId) {
  std::unique_ptr<Road> &road = _roads[appId];
  if (road == nullptr) {
    Link::Settings settings;
    settings.appId = appId;
    settings.senderId = _settings.senderId;
    settings.takeTurn = [this, appId] { return _settings.takeTurn(appId); };
    settings.releaseTurn = [this, appId] { _settings.releaseTurn(appId); };
    settings.answered = _settings.answered;
    for (const Offered &application : _settings.applications) {
      if (_settings.launch && application.appId == appId && !application.folder.empty()) {
        settings.launch = [this, application] { _settings.launch(application); };
      }
    }
    road = std::make_unique<Road>(std::move(settings));
  }
  return *road;
}

void Bridge::watchDeclarations() {
  _watch = std::make_unique<Timer>(kWatchSeconds, [this] {
    std::vector<std::string> stamps = stampsOf(_settings.applications);
    if (stamps != _stamps) {
      _stamps = std::move(stamps);
      _server.replaceCatalogue(currentCatalogue(_settings));
    }
    watchDeclarations();
  });
}

void Bridge::run() {
  ecore_main_loop_begin();
}

// What has begun may finish, for a while; what waits is dropped, for nobody reads its answer.
void Bridge::inputEnded() {
  for (const auto &[appId, road] : _roads) {
    road->lane.close();
  }
  quitWhenDone();
}

void Bridge::quitWhenDone() {
  bool done = _output.empty();
  for (const auto &[appId, road] : _roads) {
    done = done && !road->lane.busy();
  }
  _patience -= kEndingSeconds;
  if (done || _patience < 0) {
    ecore_main_loop_quit();
    return;
  }
  _ending = std::make_unique<Timer>(kEndingSeconds, [this] { quitWhenDone(); });
}

} // namespace norix::assistant::mcp
