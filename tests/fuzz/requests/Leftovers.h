// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FUZZ_LEFTOVERS_H
#define NORIX_FUZZ_LEFTOVERS_H

namespace fuzz {

/**
 * What the library leaves behind on purpose (docs/behaviour.md, "Memory"): bundles that it made
 * itself, and copies of the application's id. A fuzzer would run out of memory over them, and its
 * leak checker would report them. Everything else that is left is still found.
 */
void releaseLeftovers();

} // namespace fuzz

#endif
