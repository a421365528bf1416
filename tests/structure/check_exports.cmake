# Compares the dynamic symbols that the shared library defines with the committed list.
#
#   cmake -DNM=nm -DLIBRARY=... -DEXPECTED=exported_symbols.txt -P check_exports.cmake
cmake_minimum_required(VERSION 3.25)

execute_process(COMMAND ${NM} -D --defined-only ${LIBRARY}
  OUTPUT_VARIABLE table COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]+" rows "${table}")
set(found "")
foreach(row ${rows})
  string(REGEX REPLACE "^.* " "" symbol "${row}")
  list(APPEND found ${symbol})
endforeach()
file(STRINGS ${EXPECTED} expected REGEX "^_Z")

list(SORT found)
list(SORT expected)
if(NOT found STREQUAL expected)
  list(JOIN found "\n  " found_text)
  list(JOIN expected "\n  " expected_text)
  message(FATAL_ERROR "exported:\n  ${found_text}\nexpected:\n  ${expected_text}")
endif()
message(STATUS "exactly the members of CStreamDownloader are exported")
