// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_MCP_BRIDGE_H
#define NORIX_ASSISTANT_MCP_BRIDGE_H

#include "assistant/mcp/Catalogue.h"
#include "assistant/mcp/Input.h"
#include "assistant/mcp/Lane.h"
#include "assistant/mcp/Link.h"
#include "assistant/mcp/Output.h"
#include "assistant/mcp/Server.h"

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace norix::assistant::mcp {

/// An application to offer.
struct Offered {
  std::string appId;
  std::filesystem::path folder; ///< Where its declarations lie; empty when nobody knows.
};

/// What the applications declare now. Declarations with errors are reported to @a log, and left
/// out.
std::vector<DeclaredApplication>
readDeclarations(const std::vector<Offered> &applications,
                 const std::function<void(const std::string &)> &log);

/**
 * @brief Connects an agent, at two descriptors, with applications.
 * @details Nothing is connected or started before the first call that needs it: some clients start
 *          a bridge only to look at it.
 */
class Bridge {
public:
  struct Settings {
    std::vector<Offered> applications;
    Server::Settings server;
    std::string senderId; ///< As whom the applications are asked.
    bool readOnly = false;
    std::function<void(const Offered &)> launch; ///< Starts an application; may be empty.
    std::function<bool(const std::string &appId)> takeTurn; ///< See Link::Settings.
    std::function<void(const std::string &appId)> releaseTurn;
    /// See Link::Settings; may be empty.
    std::function<void(const Request &, const Response &, double seconds)> answered;
    std::function<void(const std::string &)> log;
  };

  /// The descriptors are borrowed.
  Bridge(Settings settings, int input, int output);

  /// Serves until the input ends, or nobody reads the output.
  void run();

private:
  /// One application: its connection, and the queue before it.
  struct Road {
    explicit Road(Link::Settings settings);

    Link link;
    Lane lane;
  };

  Server::Surroundings surroundings();
  Road &roadTo(const std::string &appId);
  void watchDeclarations();
  void inputEnded();
  void quitWhenDone();

  Settings _settings;
  std::map<std::string, std::unique_ptr<Road>> _roads;
  Output _output;
  Server _server;
  Input _input;
  std::vector<std::string> _stamps; ///< Of the files of declarations, as they were last read.
  std::unique_ptr<Timer> _watch;
  std::unique_ptr<Timer> _ending;
  double _patience = 2.0; ///< Seconds that a request in progress has after the input has ended.
};

} // namespace norix::assistant::mcp

#endif
