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
            # Functions of other libraries are bound at load: calls need no procedure linkage table.
            -fno-plt
            $<$<BOOL:${NORIX_WARNINGS_AS_ERRORS}>:-Werror>)

# pkg-config names more libraries than a target calls; only those called become NEEDED entries.
target_link_options(norix_build_options INTERFACE -Wl,--as-needed -Wl,-z,relro,-z,now)

# A library that does not name all that it needs would fail to link into applications that happen
# not to use the missing one. Clang's sanitizers leave their own functions to the program.
target_link_options(norix_build_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wl,-z,defs>)

# norix_optimise_at_link_time(<target>…): optimises targets as a whole in optimised builds, for what every
# request passes through. CMAKE_INTERPROCEDURAL_OPTIMIZATION decides instead where it is set. Not for
# objects that are installed in an archive: another compiler could not read them. Nor with clang, whose
# linker reads such objects only for programs that are optimised so themselves.
set(norix_can_optimise_at_link_time OFF)
if(CMAKE_BUILD_TYPE MATCHES "^(Release|RelWithDebInfo|MinSizeRel)$"
   AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU"
   AND NOT DEFINED CMAKE_INTERPROCEDURAL_OPTIMIZATION)
  include(CheckIPOSupported)
  check_ipo_supported(RESULT norix_can_optimise_at_link_time OUTPUT ignored LANGUAGES CXX)
endif()
function(norix_optimise_at_link_time)
  if(norix_can_optimise_at_link_time)
    set_target_properties(${ARGV} PROPERTIES INTERPROCEDURAL_OPTIMIZATION ON)
  endif()
endfunction()
