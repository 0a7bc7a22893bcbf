# SPDX-License-Identifier: Apache-2.0
#
# Provides the platform's interfaces as Platform::<pkg-config module>, wherever they come from:
#
#   NORIX_PLATFORM=device   the platform's own packages, found with pkg-config
#   NORIX_PLATFORM=desktop  the folder platform/ of this project
#   NORIX_PLATFORM=auto     device when its packages are there, desktop otherwise; packages of the
#                           desktop platform itself, installed, do not count
#
# and Norix::platform, all of them in one. Including this file sets norix_platform;
# norix_provide_platform() makes the targets.

find_package(PkgConfig REQUIRED)

set(norix_platform_modules
    bundle
    dlog
    rpc-port
    capi-appfw-app-common
    capi-appfw-app-control
    capi-appfw-app-manager
    capi-appfw-application
    capi-appfw-service-application
    capi-system-info)

if(NORIX_PLATFORM STREQUAL "auto")
  pkg_check_modules(norix_device QUIET ${norix_platform_modules})
  pkg_get_variable(norix_installed_desktop rpc-port norix_desktop)
  if(norix_device_FOUND AND NOT norix_installed_desktop)
    set(norix_platform device)
  else()
    set(norix_platform desktop)
  endif()
elseif(NORIX_PLATFORM MATCHES "^(device|desktop)$")
  set(norix_platform ${NORIX_PLATFORM})
else()
  message(FATAL_ERROR "NORIX_PLATFORM is '${NORIX_PLATFORM}': give auto, device or desktop")
endif()
message(STATUS "The platform's interfaces come from: ${norix_platform}")

# Finds one pkg-config module and names it Platform::<module>.
function(norix_import_module module)
  string(MAKE_C_IDENTIFIER "norix_${module}" prefix)
  pkg_check_modules(${prefix} REQUIRED IMPORTED_TARGET GLOBAL ${module})
  add_library(Platform::${module} ALIAS PkgConfig::${prefix})
endfunction()

# Makes Platform::<module> for every module, and Platform::ecore.
function(norix_provide_platform)
  norix_import_module(ecore)

  # What norix-assistant needs of it wherever the interfaces come from.
  if(NORIX_BUILD_TOOLS OR norix_platform STREQUAL "desktop")
    add_subdirectory(${PROJECT_SOURCE_DIR}/platform/base/descriptors
                     ${PROJECT_BINARY_DIR}/shared/descriptors)
    add_subdirectory(${PROJECT_SOURCE_DIR}/platform/ecore ${PROJECT_BINARY_DIR}/shared/ecore)
    add_subdirectory(${PROJECT_SOURCE_DIR}/platform/application/manifest
                     ${PROJECT_BINARY_DIR}/shared/manifest)
  endif()

  if(norix_platform STREQUAL "device")
    foreach(module IN LISTS norix_platform_modules)
      norix_import_module(${module})
    endforeach()
  else()
    add_subdirectory(${PROJECT_SOURCE_DIR}/platform ${PROJECT_BINARY_DIR}/platform)
  endif()

  # What an application uses of it, in one. It needs the libraries that it calls, and not both main
  # functions.
  add_library(norix_platform INTERFACE)
  add_library(Norix::platform ALIAS norix_platform)
  list(TRANSFORM norix_platform_modules PREPEND Platform:: OUTPUT_VARIABLE targets)
  target_link_libraries(norix_platform INTERFACE ${targets})
  target_link_options(norix_platform INTERFACE LINKER:--as-needed)
endfunction()
