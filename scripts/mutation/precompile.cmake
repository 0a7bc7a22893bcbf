# SPDX-License-Identifier: Apache-2.0
#
# Included by project() in the copies of the sources: the headers that are not the project's own are
# parsed once, not for every mutant. That makes compiling one three times as fast.
cmake_language(DEFER CALL target_precompile_headers norix_objects PRIVATE
               ${NORIX_MUTATION_HEADER})
