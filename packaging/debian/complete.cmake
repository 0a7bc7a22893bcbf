# SPDX-License-Identifier: Apache-2.0
#
# Completes what CPack installed for each package: the files that Debian wants in every one, and its
# own places and forms for some others.
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)

# compress(<file> <file.gz>)
function(compress file compressed)
  get_filename_component(folder ${compressed} DIRECTORY)
  file(MAKE_DIRECTORY ${folder})
  execute_process(COMMAND gzip -9nc ${file} OUTPUT_FILE ${compressed} RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "gzip failed for ${file}")
  endif()
endfunction()

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  set(root ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr)
  set(doc ${root}/share/doc/${package})

  file(MAKE_DIRECTORY ${doc})
  configure_file(${CMAKE_CURRENT_LIST_DIR}/copyright ${doc}/copyright COPYONLY)
  compress(${CMAKE_CURRENT_LIST_DIR}/../../CHANGELOG.md ${doc}/changelog.gz)
  set(changelog ${CPACK_TEMPORARY_DIRECTORY}/changelog)
  file(
    WRITE ${changelog}
    "norix (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) unstable; urgency=medium\n\n"
    "  * Version ${CPACK_PACKAGE_VERSION}: changelog.gz says what is new.\n\n"
    " -- ${CPACK_PACKAGE_CONTACT}  ${date}\n")
  compress(${changelog} ${doc}/changelog.Debian.gz)
  file(REMOVE ${changelog})

  file(GLOB pages ${root}/share/man/man?/*.[1-9])
  foreach(page IN LISTS pages)
    compress(${page} ${page}.gz)
    file(REMOVE ${page})
  endforeach()
endforeach()

# The licence is in copyright; pages lie with their package; Debian's zsh looks elsewhere.
file(REMOVE_RECURSE ${CPACK_TEMPORARY_DIRECTORY}/library/usr/share/doc/norix)
set(doc ${CPACK_TEMPORARY_DIRECTORY}/doc/usr/share/doc)
file(GLOB pages ${doc}/norix/*)
file(COPY ${pages} DESTINATION ${doc}/norix-doc)
file(REMOVE_RECURSE ${doc}/norix)
set(zsh ${CPACK_TEMPORARY_DIRECTORY}/assistant/usr/share/zsh)
if(EXISTS ${zsh}/site-functions)
  file(RENAME ${zsh}/site-functions ${zsh}/vendor-completions)
endif()
