// SPDX-License-Identifier: Apache-2.0
#include "NorixImpl/NorixCommonData.h"

#include "common/singleton.h"

#include <cstring>
#include <numeric>

namespace norix {

namespace {

constexpr unsigned long long kNoRequest = ~0ULL;

} // namespace

NorixCommonData *NorixCommonData::_instance = nullptr;

NorixCommonData *NorixCommonData::getInstance() {
  return instanceOf<NorixCommonData>();
}

void NorixCommonData::_initInstance() {
  createInstance<NorixCommonData>();
}

int NorixCommonData::initialize() {
  _requestId = kNoRequest;
  _actionHandlerIndex = 1;
  std::iota(_actionHandlers.begin(), _actionHandlers.end(), 0);
  return 0;
}

int NorixCommonData::deinitialize() {
  _requestId = kNoRequest;
  _actionHandlerIndex = 0;
  return 0;
}

void *NorixCommonData::assignHandle(const std::string &actionId) {
  const int handlerCount = static_cast<int>(_actionHandlers.size());
  _actionHandlerIndex = (_actionHandlerIndex + 1) % handlerCount;
  _actionHandlerMap.erase(_actionHandlerIndex);
  _actionHandlerMap.emplace(_actionHandlerIndex, std::make_pair(actionId, _requestId));
  return &_actionHandlers[static_cast<std::size_t>(_actionHandlerIndex)];
}

int NorixCommonData::handlerNumber(const void *requestHandle) {
  int number = 0;
  std::memcpy(&number, requestHandle, sizeof number);
  return number;
}

} // namespace norix
