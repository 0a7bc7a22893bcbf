# SPDX-License-Identifier: Apache-2.0

# norix_add_scenarios(<target> FILES file… [APP folder] [SET name=value…] [TIMEOUT seconds])
#
# Makes each scenario file a test of CTest, <target>.<name of the file>, which plays it with the
# application of the target: the folder that its program is built into, the one above when that is
# called bin, or APP. SET gives values for ${name} in the scenarios. NORIX_ASSISTANT is the program that plays them.
function(norix_add_scenarios target)
  cmake_parse_arguments(arg "" "APP;TIMEOUT" "FILES;SET" ${ARGN})
  if(NOT arg_FILES)
    message(FATAL_ERROR "norix_add_scenarios(${target}): give FILES")
  endif()
  if(NOT arg_APP)
    # An application is laid out with its program in bin/, or beside the manifest.
    set(arg_APP $<TARGET_FILE_DIR:${target}>)
    get_target_property(folder ${target} RUNTIME_OUTPUT_DIRECTORY)
    if(folder MATCHES "/bin/?$")
      string(APPEND arg_APP /..)
    endif()
  endif()
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 60)
  endif()
  if(TARGET norix-assistant)
    set(assistant $<TARGET_FILE:norix-assistant>)
  else()
    find_program(NORIX_ASSISTANT norix-assistant DOC "Plays scenarios")
    if(NOT NORIX_ASSISTANT)
      message(FATAL_ERROR "norix_add_scenarios(${target}): norix-assistant is not installed; install "
                          "it, or say in NORIX_ASSISTANT where it is")
    endif()
    set(assistant ${NORIX_ASSISTANT})
  endif()
  set(values)
  foreach(value IN LISTS arg_SET)
    list(APPEND values --set ${value})
  endforeach()

  foreach(file IN LISTS arg_FILES)
    get_filename_component(path "${file}" ABSOLUTE)
    get_filename_component(name "${file}" NAME_WE)
    add_test(NAME ${target}.${name} COMMAND ${assistant} test "${path}" --app "${arg_APP}" ${values})
    set_tests_properties(${target}.${name} PROPERTIES LABELS scenario TIMEOUT ${arg_TIMEOUT})
  endforeach()
endfunction()
