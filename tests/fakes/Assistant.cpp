// SPDX-License-Identifier: Apache-2.0
#include "fakes/Assistant.h"

#include "fakes/Platform.h"

#include <utility>

namespace fake {

namespace {

enum MethodId { kResult = 0, kCallback = 1, kSetCb = 2, kUnsetCb = 3, kSend = 4 };

} // namespace

Assistant::Assistant(std::string sender, std::string instance)
    : _sender(std::move(sender)), _instance(std::move(instance)) {}

void Assistant::connects() {
  platform().ports.connect(_sender, _instance);
}

void Assistant::disconnects() {
  platform().ports.disconnect(_sender, _instance);
}

int Assistant::registers(const Delegate &delegate) {
  return sendsParcel(
      {Int32{kSetCb}, Int32{delegate.id}, Int32{delegate.seqId}, Bool{delegate.once}});
}

int Assistant::unregisters() {
  return sendsParcel({Int32{kUnsetCb}});
}

int Assistant::sends(Contents request) {
  return sendsParcel({Int32{kSend}, BundleOf{std::move(request)}});
}

int Assistant::sendsParcel(Parcel parcel) {
  return platform().ports.deliver(_sender, _instance, std::move(parcel));
}

int Assistant::asksForState(uint64_t requestId) {
  return sends(stateRequest(requestId));
}

int Assistant::asksForAction(const std::string &actionId, uint64_t requestId) {
  return sends(actionRequest(actionId, requestId));
}

void Assistant::isReady() {
  connects();
  registers();
  platform().journal.clear();
  platform().log.clear();
}

const std::vector<Parcel> &Assistant::results() const {
  return platform().ports.sentOn(_instance, RPC_PORT_PORT_MAIN);
}

const std::vector<Parcel> &Assistant::callbacks() const {
  return platform().ports.sentOn(_instance, RPC_PORT_PORT_CALLBACK);
}

std::vector<Contents> Assistant::responses() const {
  std::vector<Contents> found;
  for (const Parcel &parcel : callbacks()) {
    found.push_back(std::get<BundleOf>(parcel.back()).contents);
  }
  return found;
}

Contents stateRequest(uint64_t requestId) {
  return {text("actionId", "getAppContext"), text("actionType", "state"),
          text("actionParams", "{}"), id("requestId", requestId)};
}

Contents actionRequest(const std::string &actionId, uint64_t requestId) {
  return {text("actionId", actionId), text("actionType", "action"), text("actionParams", "{}"),
          id("requestId", requestId)};
}

Contents stateAnswer(const std::string &appContext, uint64_t requestId) {
  return {text("status_code", "ACTION_EXECUTION_SUCCESS"), text("appContext", appContext),
          id("requestId", requestId)};
}

Contents stateFailure(const std::string &message, uint64_t requestId) {
  return {text("appContext", ""), text("status_code", "ACTION_EXECUTION_FAILURE"),
          text("status_msg", message), id("requestId", requestId)};
}

Contents actionAnswer(const std::string &result, uint64_t requestId) {
  return {text("status_code", "ACTION_EXECUTION_SUCCESS"), text("result", result),
          id("requestId", requestId)};
}

Contents actionFailure(const std::string &message, uint64_t requestId) {
  return {text("result", ""), text("status_code", "ACTION_EXECUTION_FAILURE"),
          text("status_msg", message), id("requestId", requestId)};
}

Parcel callback(const Delegate &delegate, const std::string &appId, Contents response) {
  return {Int32{kCallback},    Int32{delegate.id}, Int32{delegate.seqId},
          Bool{delegate.once}, Text{appId},        BundleOf{std::move(response)}};
}

Parcel resultOf(int value) {
  return {Int32{kResult}, Int32{value}};
}

} // namespace fake
