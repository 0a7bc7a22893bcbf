// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_NORIXIMPL_NORIXCOMMONDATA_H
#define NORIX_NORIXIMPL_NORIXCOMMONDATA_H

#include <array>
#include <forward_list>
#include <map>
#include <string>
#include <utility>

namespace norix {

/// The request in progress, shared by routing and both kinds of request.
class NorixCommonData {
public:
  static NorixCommonData *getInstance();
  static void _initInstance();

  int initialize();
  int deinitialize();

  /// Whether the client's id has a character buffer. An empty id is a client, too.
  bool hasClient() const;

  /// Assigns the next handler number to the request in progress, replacing the entry of the request
  /// that had the number before. Returns the handle: the address of the slot that holds the number.
  void *assignHandle(const std::string &actionId);

  /// Remembers the handle of a request that waited for its callback, which is the action id's text
  /// instead of a slot, if the text is shorter than an int.
  void noteTextHandle(const char *actionId);

  /// The handler number of a handle: the int at its address. A short text is read up to its NUL,
  /// and the missing bytes count as zeros.
  int handlerNumber(const void *requestHandle) const;

  static NorixCommonData *_instance;

  int _actionHandlerIndex = 0;
  std::array<int, 100> _actionHandlers = {};
  /// Handler number → (action id, request id).
  std::map<int, std::pair<std::string, unsigned long long>> _actionHandlerMap;
  /// The sender of the latest request; outlives deinitialize.
  std::string _norixClientAppId;
  unsigned long long _requestId = 0;

private:
  /// Only grows: the copies of the requests that these texts belong to are never freed.
  std::forward_list<const void *> _shortTextHandles;
};

} // namespace norix

#endif
