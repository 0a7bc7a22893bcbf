// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_NORIXIMPL_NORIXCOMMONDATA_H
#define NORIX_NORIXIMPL_NORIXCOMMONDATA_H

#include <array>
#include <forward_list>
#include <map>
#include <string>
#include <utility>

namespace norix {

// The request in progress, shared by routing and both kinds of request.
class NorixCommonData {
public:
  static NorixCommonData *getInstance();
  static void _initInstance();

  int initialize();
  int deinitialize();

  // Whether there is a client to answer: whether its id has a character buffer. An id that is
  // merely empty is a client.
  bool hasClient() const;

  // Gives the request in progress the next handler number, forgetting the request that had it
  // before, and returns the handle: the address of the slot that holds the number.
  void *assignHandle(const std::string &actionId);

  // The handle of a request that waited for its callback is not a slot but the action id's text.
  // Such a text is noted when it is too short to be read as an int.
  void noteTextHandle(const char *actionId);

  // The handler number behind a handle: the int it points at. Of a text, no byte behind its NUL is
  // read; those count as zeros.
  int handlerNumber(const void *requestHandle) const;

  static NorixCommonData *_instance;

  int _actionHandlerIndex = 0;
  std::array<int, 100> _actionHandlers = {};
  // Handler number → (action id, request id).
  std::map<int, std::pair<std::string, unsigned long long>> _actionHandlerMap;
  // The sender of the latest request; outlives deinitialize.
  std::string _norixClientAppId;
  unsigned long long _requestId = 0;

private:
  // Never forgotten: the parked requests that these texts are part of are never freed.
  std::forward_list<const void *> _shortTextHandles;
};

} // namespace norix

#endif
