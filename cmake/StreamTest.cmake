# stream_add_test(NAME LABEL label SOURCES file... [LIBRARIES target...] [COMPONENT object...]
#                 [SHARDS count] [TIMEOUT seconds] [SERVERS])
#
# A GoogleTest program linked with all of the component, or with those objects of it. It is one CTest
# test, or SHARDS of them that run side by side, and its cases run in one process, in any order: all of
# the component is put back to its first state before each. Their results are in test-results/ of the
# build. SERVERS adds the HTTP servers of tests/support.
#
# Each shard is in a directory of its own, since cache files are made beside the executable. The tests
# themselves are not optimised, nor looked at by the undefined-behaviour sanitizer, which more than
# halves the time to build them with sanitizers. The component inside is both.
find_package(GTest REQUIRED)
set(STREAM_TEST_RESULTS ${PROJECT_BINARY_DIR}/test-results)

# What tests are compiled with besides the options of the project. Programs and object libraries are
# compiled alike, so that they can share precompiled headers.
function(stream_test_options target)
  set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE OFF)
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR})
  if(NOT MSVC)
    target_compile_options(${target} PRIVATE -O0)
  endif()
  if(NOT WIN32)
    # As the packages of some libraries ask for, so that all tests can share the headers.
    target_compile_definitions(${target} PRIVATE _REENTRANT)
  endif()
  if(STREAM_SANITIZE MATCHES "undefined")
    target_compile_options(${target} PRIVATE -fno-sanitize=undefined)
  endif()
  target_link_libraries(${target} PRIVATE
    CURL::libcurl Threads::Threads $<LINK_ONLY:mp4_reader> stream_options GTest::gmock)
  if(WIN32)
    target_link_libraries(${target} PRIVATE winmm)
  endif()
endfunction()

# The headers of the test framework are most of what a test makes the compiler read.
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

# stream_add_test_shard(NAME LABEL TIMEOUT INDEX COUNT)
function(stream_add_test_shard name label timeout index count)
  set(test ${name})
  set(program $<TARGET_FILE:${name}>)
  set(directory ${PROJECT_BINARY_DIR}/tests/${name})
  if(count GREATER 1)
    set(test ${name}.${index})
    set(directory ${directory}/shard_${index})
    set(program ${directory}/$<TARGET_FILE_NAME:${name}>)
    file(MAKE_DIRECTORY ${directory})
    add_custom_command(TARGET ${name} POST_BUILD
      COMMAND ${CMAKE_COMMAND} -E rm -f ${program}
      COMMAND ${CMAKE_COMMAND} -E create_hardlink $<TARGET_FILE:${name}> ${program})
  endif()
  add_test(NAME ${test}
    COMMAND ${CMAKE_CROSSCOMPILING_EMULATOR} ${program} --gtest_shuffle
            --gtest_output=xml:${STREAM_TEST_RESULTS}/${test}.xml
    WORKING_DIRECTORY ${directory})
  math(EXPR shard "${index} - 1")
  set_tests_properties(${test} PROPERTIES LABELS ${label} TIMEOUT ${timeout}
    ENVIRONMENT "GTEST_TOTAL_SHARDS=${count};GTEST_SHARD_INDEX=${shard}")
endfunction()

function(stream_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "SERVERS" "LABEL;TIMEOUT;SHARDS" "SOURCES;LIBRARIES;COMPONENT")
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 600)  # under wine, beside other work
  endif()
  if(NOT arg_SHARDS)
    set(arg_SHARDS 1)
  endif()
  set(main GTest::gtest_main)
  if(NOT arg_COMPONENT)
    set(arg_COMPONENT $<TARGET_OBJECTS:stream_core> $<TARGET_OBJECTS:component_test_main>)
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
  set_target_properties(${name} PROPERTIES
    RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/tests/${name})
  foreach(index RANGE 1 ${arg_SHARDS})
    stream_add_test_shard(${name} ${arg_LABEL} ${arg_TIMEOUT} ${index} ${arg_SHARDS})
  endforeach()
endfunction()
