# SPDX-License-Identifier: Apache-2.0
#
# Installing. The components, which are also the packages:
#
#   library       libnorix.so, and the licence
#   library-dev   norix.h, norix.hpp, norix.pc, norix-cpp.pc and the CMake package
#   desktop       the desktop platform's libraries
#   desktop-dev   their headers and .pc files, and Norix::assistant-client
#   assistant     norix-assistant, its probe, completions and manual pages; norix-demo
#   doc           the pages

# norix_install(<arguments of install()>): nothing when another project builds this one and does not
# ask for it.
function(norix_install)
  if(NORIX_INSTALL)
    install(${ARGV})
  endif()
endfunction()

# An installation in any folder runs, and still does when it is moved. On a device the libraries lie
# where every program finds them.
file(RELATIVE_PATH norix_bin_to_lib ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
if(norix_platform STREQUAL "desktop")
  set(norix_library_run_path $ORIGIN)
  set(norix_program_run_path $ORIGIN/${norix_bin_to_lib})
endif()
set(CMAKE_INSTALL_RPATH ${norix_library_run_path})

norix_install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR}
              COMPONENT library)

if(norix_is_top_level)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/uninstall.cmake.in uninstall.cmake @ONLY)
  add_custom_target(
    uninstall
    COMMAND ${CMAKE_COMMAND} -P ${PROJECT_BINARY_DIR}/uninstall.cmake
    COMMENT "Removing what was installed")
endif()
