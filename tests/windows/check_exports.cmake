# The DLL exports the members of CStreamDownloader and nothing else.
cmake_minimum_required(VERSION 3.25)

set(expected
  _ZN17CStreamDownloader11EndDownloadEv
  _ZN17CStreamDownloader13BeginDownloadENSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE
  _ZN17CStreamDownloader15SetStartPostionEf
  _ZN17CStreamDownloader16__autoclassinit2Ey
  _ZN17CStreamDownloaderC1EP16CStreamPlayerImp
  _ZN17CStreamDownloaderC2EP16CStreamPlayerImp
  _ZN17CStreamDownloaderD1Ev
  _ZN17CStreamDownloaderD2Ev
  _ZN17CStreamDownloaderaSERKS_)

execute_process(COMMAND ${OBJDUMP} -p ${DLL} OUTPUT_VARIABLE dump COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE ".*\n\\[Ordinal/Name Pointer\\] Table" "" names "${dump}")
string(REGEX REPLACE "\n\n.*" "" names "${names}")
string(REGEX MATCHALL "\\[ *[0-9]+\\] [^\n]+" rows "${names}")
list(TRANSFORM rows REPLACE "^\\[ *[0-9]+\\] " "")
list(SORT rows)
list(SORT expected)
if(NOT rows STREQUAL expected)
  list(JOIN rows "\n  " found)
  list(JOIN expected "\n  " wanted)
  message(FATAL_ERROR "the library exports\n  ${found}\nbut should export\n  ${wanted}")
endif()
