# SPDX-License-Identifier: Apache-2.0
#
# How scripts/memcheck has ctest put valgrind in front of every case:
# ctest --script memcheck.cmake -Dlabels=REGEX -Dcases=REGEX -Dlogs=FOLDER
get_filename_component(CTEST_SOURCE_DIRECTORY ${CMAKE_CURRENT_LIST_DIR} DIRECTORY)
set(CTEST_BINARY_DIRECTORY ${CTEST_SOURCE_DIRECTORY}/build/dev)
set(CTEST_MEMORYCHECK_TYPE Valgrind)
find_program(CTEST_MEMORYCHECK_COMMAND valgrind REQUIRED)
# Blocks that are still reachable belong to the objects that live as long as the process. A log of
# its own for each process, also those that a case starts: ctest knows one for each case only, and
# misses it, which is no matter. The operators new and delete of the fakes stay in force: valgrind
# would put its own in their place, and no test could make one fail. grep, which a test pipes through,
# is not ours to check.
string(
  JOIN " " CTEST_MEMORYCHECK_COMMAND_OPTIONS
  --leak-check=full
  --show-leak-kinds=definite,possible
  --errors-for-leak-kinds=definite,possible
  --error-exitcode=99
  --trace-children=yes
  --trace-children-skip=*/grep
  --soname-synonyms=somalloc=nouserintercepts
  --suppressions=${CTEST_SOURCE_DIRECTORY}/tests/valgrind.supp
  --log-file=${logs}/%p.log)

# valgrind imitates a limit on descriptors by accepting a connection and closing it again, where the
# kernel leaves it waiting: this case cannot hold there.
set(impossible "RunningOutOfDescriptors\\.MakesConnectionsWaitUntilThereAreSome$")

cmake_host_system_information(RESULT processors QUERY NUMBER_OF_LOGICAL_CORES)
ctest_start(Experimental QUIET)
ctest_memcheck(
  INCLUDE "${cases}"
  EXCLUDE "${impossible}"
  INCLUDE_LABEL "${labels}"
  PARALLEL_LEVEL ${processors}
  RETURN_VALUE failed)
if(failed)
  message(FATAL_ERROR "cases failed")
endif()
