// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FAKES_SINGLETONS_H
#define NORIX_FAKES_SINGLETONS_H

namespace fake {

// The library's four objects live as long as the process; a test lives shorter. Destroys them, and
// what they own with them: what is left then belongs to nobody. The next call makes them anew, as a
// new process does.
void destroySingletons();

} // namespace fake

#endif
