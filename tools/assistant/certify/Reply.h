// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CERTIFY_REPLY_H
#define NORIX_ASSISTANT_CERTIFY_REPLY_H

#include <string>

namespace norix::assistant::certify {

/// What came of a request.
struct Reply {
  enum class Kind {
    Answered,
    /// The library answered that no callback is registered.
    NotRegistered,
    /// The library answered that the application did not.
    TimedOut,
    /// The allow list does not name the sender.
    Refused,
    /// Neither the application nor the library answered.
    Silent,
    /// There is no connection (any more).
    Lost,
    /// Something else came.
    Other
  };

  Kind kind = Kind::Other;
  /// The answer; unless there is one, what happened instead, to follow "the request" in a sentence.
  std::string text;

  bool isAnswered() const { return kind == Kind::Answered; }
};

} // namespace norix::assistant::certify

#endif
