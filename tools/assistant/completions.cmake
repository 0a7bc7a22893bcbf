# SPDX-License-Identifier: Apache-2.0
#
# Completion in the shells, installed where each looks for it: as the program prints it, so a program
# that cannot be run where it is built goes without.
if(CMAKE_CROSSCOMPILING AND NOT CMAKE_CROSSCOMPILING_EMULATOR)
  return()
endif()

# norix_add_completion(<shell> <folder> <name>)
function(norix_add_completion shell folder name)
  set(file ${CMAKE_CURRENT_BINARY_DIR}/completions/${name})
  add_custom_command(
    TARGET norix-assistant
    POST_BUILD
    COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_CURRENT_BINARY_DIR}/completions
    COMMAND ${CMAKE_CROSSCOMPILING_EMULATOR} $<TARGET_FILE:norix-assistant> completion ${shell} >
            ${file}
    VERBATIM)
  norix_install(FILES ${file} DESTINATION ${CMAKE_INSTALL_DATADIR}/${folder} COMPONENT assistant)
endfunction()

norix_add_completion(bash bash-completion/completions norix-assistant)
norix_add_completion(zsh zsh/site-functions _norix-assistant)
norix_add_completion(fish fish/vendor_completions.d norix-assistant.fish)
