// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FAKES_ASSISTANT_H
#define NORIX_FAKES_ASSISTANT_H

#include "fakes/Values.h"

#include <cstdint>
#include <string>
#include <vector>

namespace fake {

inline constexpr const char *kAssistantId = "com.valtren.tizen.norix";

/// The three values of a delegate, as the proxy chose them.
struct Delegate {
  int id = 1;
  int seqId = 7;
  bool once = false;
};

/// A proxy: one connection to the library's stub. What it sends is delivered at once; the results
/// are those of the library's received handler.
class Assistant {
public:
  explicit Assistant(std::string sender = kAssistantId, std::string instance = "instance-1");

  void connects();
  void disconnects();
  int registers(const Delegate &delegate = {});
  int unregisters();
  int sends(Contents request);
  int sendsParcel(Parcel parcel);

  int asksForState(uint64_t requestId);
  int asksForAction(const std::string &actionId, uint64_t requestId);

  /// Connected and registered: what most tests begin with.
  void isReady();

  /// What the proxy has received, in order: results of its calls, and invocations of its delegate.
  const std::vector<Parcel> &results() const;
  const std::vector<Parcel> &callbacks() const;
  /// The bundles of the invocations alone.
  std::vector<Contents> responses() const;

  const std::string &sender() const { return _sender; }
  const std::string &instance() const { return _instance; }

private:
  std::string _sender;
  std::string _instance;
};

/// Requests as the assistant writes them.
Contents stateRequest(uint64_t requestId);
Contents actionRequest(const std::string &actionId, uint64_t requestId);

/// Responses as it reads them.
Contents stateAnswer(const std::string &appContext, uint64_t requestId);
Contents stateFailure(const std::string &message, uint64_t requestId);
Contents actionAnswer(const std::string &result, uint64_t requestId);
Contents actionFailure(const std::string &message, uint64_t requestId);

/// The parcel of a delegate's invocation.
Parcel callback(const Delegate &delegate, const std::string &appId, Contents response);
/// The parcel that answers SetCB and UnsetCB.
Parcel resultOf(int value);

} // namespace fake

#endif
