# Checks that a program that crashes ends with a status other than 0. wine's debugger would end it with 0.
cmake_minimum_required(VERSION 3.25)

execute_process(COMMAND ${EMULATOR} ${PROGRAM} RESULT_VARIABLE status OUTPUT_VARIABLE output)
if(NOT output MATCHES "^started")
  message(FATAL_ERROR "the program did not run: ${output}")
endif()
if(status EQUAL 0)
  message(FATAL_ERROR "a crash ended with status 0")
endif()
