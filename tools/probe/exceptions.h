// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_PROBE_EXCEPTIONS_H
#define NORIX_PROBE_EXCEPTIONS_H

namespace norix::probe {

/// What the calling thread threw last, inside a callback: the mangled name of the type, and what()
/// of a std::exception. Null when not known.
struct LastException {
  const char *type;
  const char *what;
};
LastException lastException();

} // namespace norix::probe

#endif
