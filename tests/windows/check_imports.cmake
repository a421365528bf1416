# Checks that a DLL needs no DLLs but those of every Windows 10 and those in BESIDE.
#
#   cmake -DOBJDUMP=objdump -DDLL=... [-DBESIDE=name.dll] -P check_imports.cmake
cmake_minimum_required(VERSION 3.25)

set(allowed ADVAPI32.dll bcrypt.dll CRYPT32.dll KERNEL32.dll msvcrt.dll WINMM.dll WS2_32.dll ${BESIDE})

execute_process(COMMAND ${OBJDUMP} -p ${DLL} OUTPUT_VARIABLE dump COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "DLL Name: [^\n]+" imports "${dump}")
list(TRANSFORM imports REPLACE "DLL Name: " "")
if(NOT "KERNEL32.dll" IN_LIST imports)
  message(FATAL_ERROR "the import table cannot be read; found: ${imports}")
endif()
list(REMOVE_ITEM imports ${allowed})
if(imports)
  message(FATAL_ERROR "the library needs DLLs that Windows may not have: ${imports}")
endif()
