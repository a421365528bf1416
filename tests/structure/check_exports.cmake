# Compares the dynamic symbols that a shared library defines with a committed list.
#
#   cmake -DNM=nm -DLIBRARY=... -DEXPECTED=exported_symbols.txt -P check_exports.cmake
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/expect_names.cmake)

execute_process(COMMAND ${NM} -D --defined-only ${LIBRARY}
  OUTPUT_VARIABLE table COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]+" rows "${table}")
list(TRANSFORM rows REPLACE "^.* " "")
expect_names(${EXPECTED} "${rows}")
