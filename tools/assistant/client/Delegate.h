// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLIENT_DELEGATE_H
#define NORIX_ASSISTANT_CLIENT_DELEGATE_H

#include <string>

namespace norix::assistant {

/**
 * @brief The record by which an assistant names the object that takes its responses.
 * @details The application does not interpret it, except for @a once; it comes back unchanged with
 *          every response.
 */
struct Delegate {
  int id = 1;        /**< The type of the delegate; the interface has one, ResponseCB, 1. */
  int seqId = 0;     /**< Tells two delegates of one type apart. */
  bool once = false; /**< Whether the application may answer through it one time only. */

  /** @brief The delegate as text: id, two colons, sequence id. */
  std::string tag() const { return std::to_string(id) + "::" + std::to_string(seqId); }
};

inline bool operator==(const Delegate &a, const Delegate &b) {
  return a.id == b.id && a.seqId == b.seqId && a.once == b.once;
}
inline bool operator!=(const Delegate &a, const Delegate &b) {
  return !(a == b);
}

} // namespace norix::assistant

#endif
