# SPDX-License-Identifier: Apache-2.0
#
# norix_build_options: what every target of this project is compiled and linked with.

add_library(norix_build_options INTERFACE)

target_compile_options(
  norix_build_options
  INTERFACE -Wall
            -Wextra
            -Wpedantic
            -Wshadow
            -Wconversion
            # Log lines carry __FILE__: keep the build folder's path out of the binaries.
            -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=
            $<$<BOOL:${NORIX_WARNINGS_AS_ERRORS}>:-Werror>)

# pkg-config names more libraries than a target calls; only those called become NEEDED entries.
target_link_options(norix_build_options INTERFACE -Wl,--as-needed -Wl,-z,relro,-z,now)

# A library that does not name all that it needs would fail to link into applications that happen
# not to use the missing one. Clang's sanitizers leave their own functions to the program.
target_link_options(norix_build_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wl,-z,defs>)
