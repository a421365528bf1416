# stream_add_test(NAME label... SOURCES file... [LIBRARIES target...] [COMPONENT object...])
#
# A GoogleTest program linked with all of the component, or with those objects of it. Each of its cases is a CTest test of its own,
# and so a process of its own: much of the component's state is process-wide. The program lies in a
# directory of its own, since cache files are made beside the executable; cases of one program never
# run side by side for the same reason. The tests themselves are not optimised, nor looked at by the
# undefined-behaviour sanitizer, which more than halves the time to build them with sanitizers. The
# component inside is both.
find_package(GTest REQUIRED)
include(GoogleTest)

function(stream_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "LABEL;TIMEOUT" "SOURCES;LIBRARIES;COMPONENT")
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 120)
  endif()
  if(NOT arg_COMPONENT)
    set(arg_COMPONENT $<TARGET_OBJECTS:stream_core>)
  endif()
  add_executable(${name} ${arg_SOURCES} ${arg_COMPONENT})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
  if(NOT WIN32)
    target_compile_options(${name} PRIVATE -O0)
  endif()
  if(STREAM_SANITIZE MATCHES "undefined")
    target_compile_options(${name} PRIVATE -fno-sanitize=undefined)
  endif()
  target_link_libraries(${name} PRIVATE
    CURL::libcurl Threads::Threads $<LINK_ONLY:mp4_reader> stream_options $<$<BOOL:${WIN32}>:winmm> GTest::gmock GTest::gtest_main ${arg_LIBRARIES})
  set_target_properties(${name} PROPERTIES
    RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/tests/${name})
  gtest_discover_tests(${name}
    DISCOVERY_MODE PRE_TEST
    DISCOVERY_TIMEOUT 120
    WORKING_DIRECTORY ${PROJECT_BINARY_DIR}/tests/${name}
    PROPERTIES LABELS ${arg_LABEL} TIMEOUT ${arg_TIMEOUT} RESOURCE_LOCK ${name})
endfunction()
