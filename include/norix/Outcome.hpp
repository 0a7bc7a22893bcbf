/* SPDX-License-Identifier: Apache-2.0 */
#ifndef NORIX_OUTCOME_HPP
#define NORIX_OUTCOME_HPP

namespace norix {

/** @brief What became of an answer. Everything but the first two is in the log as well. */
enum class Outcome {
  /** It was handed to the channel. The assistant may be about to disconnect. */
  Sent,
  /** It was given on another thread: the main loop sends it, if somebody still waits by then. */
  OnItsWay,
  /** Nobody waits: the request was replaced by another one, was answered, has timed out, or the
      Assistant object is gone. The answer was dropped. */
  NobodyWaits,
  /** The request arrived before its action was registered: it can be executed, not answered. */
  CannotBeAnswered,
  /** The Request object was answered before, or was moved from. */
  Spent,
  /** The channel did not take it: the assistant is gone, or memory is short. */
  Failed
};

} // namespace norix

#endif
