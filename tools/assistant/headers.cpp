// SPDX-License-Identifier: Apache-2.0
//
// Nothing: the source that the shared precompiled header is built for.
