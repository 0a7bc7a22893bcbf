// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FAKES_SINGLETONS_H
#define NORIX_FAKES_SINGLETONS_H

namespace fake {

/// Destroys the library's four process-wide objects with everything they own, so that the next call
/// creates them as in a new process. What is left after that has been leaked.
void destroySingletons();

} // namespace fake

#endif
