// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_RPC_PORT_MEMORY_HEAP_H
#define TESTS_RPC_PORT_MEMORY_HEAP_H

namespace rpc_test {

/// Lets one allocation fail, of those that the transport and its libraries make in C++, or with
/// malloc(), calloc(), realloc() and strdup(). EFL's are left alone: it ends the process instead.
/// @param nth 1 for the next one; 0 for none.
void failAllocation(int nth);

/// Whether that allocation has come.
bool hasFailed();

} // namespace rpc_test

#endif
