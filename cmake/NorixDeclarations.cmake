# SPDX-License-Identifier: Apache-2.0

# norix_write_declarations(<target> [FILE path])
#
# Has the declarations of an application written whenever it was built, so that they say what its code
# does: the program is run with --norix-declarations, which norix::printsDeclarations() answers, and
# what it prints goes into the file; without FILE into shared/res/norix-actions.json, one folder above
# the program's. When cross-compiling it needs CMAKE_CROSSCOMPILING_EMULATOR.
function(norix_write_declarations target)
  cmake_parse_arguments(arg "" "FILE" "" ${ARGN})
  if(NOT arg_FILE)
    set(application_folder $<TARGET_FILE_DIR:${target}>/..)
    set(arg_FILE ${application_folder}/shared/res/norix-actions.json)
  endif()
  if(CMAKE_CROSSCOMPILING AND NOT CMAKE_CROSSCOMPILING_EMULATOR)
    message(WARNING "norix_write_declarations(${target}): the program cannot be run here; set "
                    "CMAKE_CROSSCOMPILING_EMULATOR, or write the file on a machine that can")
    return()
  endif()

  get_filename_component(folder "${arg_FILE}" DIRECTORY)
  add_custom_command(
    TARGET ${target}
    POST_BUILD
    COMMAND ${CMAKE_COMMAND} -E make_directory "${folder}"
    COMMAND ${CMAKE_CROSSCOMPILING_EMULATOR} $<TARGET_FILE:${target}> --norix-declarations >
            "${arg_FILE}"
    VERBATIM)
endfunction()
