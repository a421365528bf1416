# Checks for the flag that keeps a shared library in a process that closes it.
#
#   cmake -DOBJDUMP=objdump -DLIBRARY=... -P check_stays_loaded.cmake
cmake_minimum_required(VERSION 3.25)

execute_process(COMMAND ${OBJDUMP} -p ${LIBRARY} OUTPUT_VARIABLE headers COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCH "FLAGS_1 +0x([0-9a-f]+)" flags "${headers}")
math(EXPR nodelete "0x0${CMAKE_MATCH_1} & 0x8")  # DF_1_NODELETE
if(nodelete EQUAL 0)
  message(FATAL_ERROR "${LIBRARY} can be unloaded")
endif()
