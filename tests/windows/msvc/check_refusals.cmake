# Checks that the public header refuses hosts whose strings the library cannot accept, and that it says what to do
# instead.
cmake_minimum_required(VERSION 3.25)

# compile(OPTION...) - compiles the header alone with clang, as for Visual C++.
function(compile)
  execute_process(
    COMMAND ${CLANG} --target=${target} -fsyntax-only -std=c++14 -nostdinc++
            -isystem ${STANDARD_HEADERS} ${ARGN} -x c++ ${HEADERS}/stream_downloader.h
    RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
  set(status ${status} PARENT_SCOPE)
  set(output "${output}" PARENT_SCOPE)
endfunction()

function(expect_refusal reason)
  compile(${ARGN})
  if(status EQUAL 0 OR NOT output MATCHES "${reason}")
    message(FATAL_ERROR "${ARGN} should be refused with '${reason}', but gave ${status}:\n${output}")
  endif()
endfunction()

set(target x86_64-pc-windows-msvc)
compile(-DNDEBUG)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "a release build is refused:\n${output}")
endif()
expect_refusal("Build this host in release mode.*stream_downloader_c\\.h" -D_DEBUG)
expect_refusal("This std::string is not that of the stream_downloader library.*stream_downloader_c\\.h"
  -DTESTS_MSVC_CHECKED_STRINGS)

set(target i686-pc-windows-msvc)
expect_refusal("build the host for 64 bits" -DNDEBUG)
