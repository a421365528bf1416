# Compares the names that a DLL exports with a committed list.
#
#   cmake -DOBJDUMP=objdump -DDLL=... -DEXPECTED=exported_names.txt -P check_exports.cmake
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/../structure/expect_names.cmake)

execute_process(COMMAND ${OBJDUMP} -p ${DLL} OUTPUT_VARIABLE dump COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE ".*\n\\[Ordinal/Name Pointer\\] Table" "" names "${dump}")
string(REGEX REPLACE "\n\n.*" "" names "${names}")
string(REGEX MATCHALL "\\[ *[0-9]+\\] [^\n]+" rows "${names}")
list(TRANSFORM rows REPLACE "^\\[ *[0-9]+\\] " "")
expect_names(${EXPECTED} "${rows}")
