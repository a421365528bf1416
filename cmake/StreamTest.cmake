# stream_add_test(NAME LABEL label SOURCES file... [LIBRARIES target...] [COMPONENT object...]
#                 [SERVERS] [HOST])
#
# Adds a GoogleTest program. It is linked with the whole component, or with the COMPONENT objects only. A HOST is
# linked with neither, but may have shared libraries in LIBRARIES. The program is one CTest test and one process,
# in a directory of its own, because cache files are made beside the executable. Its cases run in random order;
# except in a HOST, the whole component is reset to its initial state before each. Results are written to
# test-results/ in the build tree. SERVERS adds the HTTP servers of tests/support.
#
# Sources are joined by CMake's unity build, which halves the build time. So names must be unique within a program,
# even in unnamed namespaces.
#
# The tests themselves are neither optimised nor instrumented by the undefined-behaviour sanitizer, which more than
# halves their build time with sanitizers. The component in the program is instrumented, and optimised as the
# preset specifies.
find_package(GTest REQUIRED)

# Compiler options of tests in addition to those of the project. Programs and object libraries have the same
# options, so that they can share precompiled headers.
function(stream_test_options target)
  set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE OFF)
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR})
  if(NOT MSVC)
    target_compile_options(${target} PRIVATE -O0)
  endif()
  if(NOT WIN32)
    # The packages of some libraries require this macro. With it everywhere, all tests can share the headers.
    target_compile_definitions(${target} PRIVATE _REENTRANT)
  endif()
  if(STREAM_SANITIZE MATCHES "address")
    target_compile_definitions(${target} PRIVATE STREAM_TEST_FAILING_NEW)
  endif()
  if(STREAM_SANITIZE MATCHES "undefined")
    target_compile_options(${target} PRIVATE -fno-sanitize=undefined)
  endif()
  target_link_libraries(${target} PRIVATE
    stream_headers CURL::libcurl Threads::Threads $<LINK_ONLY:mp4_reader> stream_options GTest::gmock)
endfunction()

# Most of the source text that the compiler reads for a test is the headers of the test framework.
function(stream_add_test_headers)
  if(TARGET test_headers)
    return()
  endif()
  set(source ${PROJECT_BINARY_DIR}/tests/test_headers.cc)
  file(CONFIGURE OUTPUT ${source} CONTENT "")
  add_library(test_headers OBJECT ${source})
  stream_test_options(test_headers)
  target_precompile_headers(test_headers PRIVATE
    <gmock/gmock.h> <gtest/gtest.h> <algorithm> <atomic> <chrono> <condition_variable> <cstdint>
    <filesystem> <fstream> <functional> <future> <map> <mutex> <string> <thread> <vector>)
endfunction()

function(stream_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "SERVERS;HOST" "LABEL" "SOURCES;LIBRARIES;COMPONENT")
  set(main GTest::gtest_main)
  if(NOT arg_COMPONENT AND NOT arg_HOST)
    set(arg_COMPONENT $<TARGET_OBJECTS:component_test_main>)
    list(APPEND arg_LIBRARIES stream_core)
    set(main)
  endif()
  if(arg_SERVERS)
    list(APPEND arg_COMPONENT $<TARGET_OBJECTS:test_servers>)
    list(APPEND arg_LIBRARIES $<LINK_ONLY:PkgConfig::httplib>)
  endif()
  stream_add_test_headers()
  add_executable(${name} ${arg_SOURCES} ${arg_COMPONENT})
  stream_test_options(${name})
  target_precompile_headers(${name} REUSE_FROM test_headers)
  target_link_libraries(${name} PRIVATE ${main} ${arg_LIBRARIES})
  set_target_properties(${name} PROPERTIES UNITY_BUILD ON
    RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/tests/${name})
  if(arg_HOST AND WIN32)  # Windows searches for DLLs in the directory of the program
    add_custom_command(TARGET ${name} POST_BUILD
      COMMAND ${CMAKE_COMMAND} -E copy_if_different
              $<TARGET_RUNTIME_DLLS:${name}> $<TARGET_FILE_DIR:${name}>
      COMMAND_EXPAND_LISTS)
  endif()
  add_test(NAME ${name}
    COMMAND ${name} --gtest_shuffle --gtest_output=xml:../../test-results/${name}.xml
    WORKING_DIRECTORY ${PROJECT_BINARY_DIR}/tests/${name})
  # Long enough that only a hang exceeds it, also under wine and on a busy machine.
  set_tests_properties(${name} PROPERTIES LABELS "${arg_LABEL}" TIMEOUT 600)
endfunction()
