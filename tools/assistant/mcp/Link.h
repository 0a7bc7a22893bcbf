// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_MCP_LINK_H
#define NORIX_ASSISTANT_MCP_LINK_H

#include "assistant/client/Client.h"
#include "assistant/client/Timer.h"
#include "assistant/mcp/Work.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace norix::assistant::mcp {

/**
 * @brief The connection to one application: made when it is first needed, and again when it broke.
 * @details One request at a time. Nothing that was sent is ever sent again.
 */
class Link {
public:
  struct Settings {
    std::string appId;
    std::string senderId;   ///< As whom the bridge asks; for the words of a refusal.
    double runSeconds = 32; ///< From the beginning of a request to its end, connecting included.
    std::function<void()> launch; ///< Starts the application; empty: it has to run. Throws.
    /// Tries to become the one process that asks as this sender, and says whether it did: of one
    /// sender id the library answers through the delegate that was registered last.
    std::function<bool()> takeTurn;
    std::function<void()> releaseTurn;
    /// Told of every request that was answered, and after how many seconds; may be empty.
    std::function<void(const Request &, const Response &, double seconds)> answered;
  };

  explicit Link(Settings settings);

  /// Sends a request. @a done is called once, from the main loop or at once.
  void run(const Work &work, Done done);

private:
  struct Current {
    Request request;
    Done done;
    std::unique_ptr<Timer> limit;
    bool sent = false;
    std::chrono::steady_clock::time_point sentAt;
    bool launched = false;
    bool reconnected = false;
  };

  void begin();
  void connect();
  void registerAndSend();
  void onEnded(const Error &error);
  void onAnswered(const Answer &answer);
  void drop();
  void launchOrFail();
  void onLimit();
  void fail(const Error &error);
  void report(const Response &response) const;
  void finish(const Outcome &outcome);

  Settings _settings;
  std::unique_ptr<Client> _client;
  bool _connected = false;
  std::optional<Current> _current;
  std::unique_ptr<Timer> _retry;
};

} // namespace norix::assistant::mcp

#endif
