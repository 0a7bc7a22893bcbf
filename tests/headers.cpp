// SPDX-License-Identifier: Apache-2.0
//
// Stands for the test files in the build: their common headers are parsed with it, once.
