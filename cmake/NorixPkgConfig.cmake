# SPDX-License-Identifier: Apache-2.0
#
# Where a .pc file finds the folders of its installation: from the place of its own, so that an
# installation may be moved, and installed with another prefix than was configured.
file(RELATIVE_PATH norix_pc_to_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig
     ${CMAKE_INSTALL_PREFIX})
file(RELATIVE_PATH norix_pc_libdir ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH norix_pc_includedir ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
string(REGEX REPLACE "/$" "" norix_pc_to_prefix ${norix_pc_to_prefix})
# Where the linker finds the libraries that libnorix.so needs. On a device it knows.
if(norix_platform STREQUAL "desktop")
  set(norix_pc_rpath_link "-Wl,-rpath-link,\${libdir} ")
endif()
