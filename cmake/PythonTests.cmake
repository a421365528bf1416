# stream_add_python_tests(PREFIX DIRECTORY [ENVIRONMENT name=value...])
#
# Each case of the *_test.py in DIRECTORY is a CTest test of its own, and a process of its own, named
# PREFIX.module.Class.case. They play with the console host, and find what is in tests/e2e.
find_package(Python3 REQUIRED COMPONENTS Interpreter)

function(stream_add_python_tests prefix directory)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "" "ENVIRONMENT")
  set(runner ${PROJECT_SOURCE_DIR}/tests/e2e)
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${directory}/*.py)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${sources})
  # Where the host was built for another system, its emulator runs it.
  set(host "'$<TARGET_FILE:stream_host>'")
  if(CMAKE_CROSSCOMPILING_EMULATOR)
    set(host "'${CMAKE_CROSSCOMPILING_EMULATOR}' ${host}")
  endif()

  execute_process(
    COMMAND ${CMAKE_COMMAND} -E env PYTHONDONTWRITEBYTECODE=1
            ${Python3_EXECUTABLE} ${runner}/list_tests.py ${directory}
    OUTPUT_VARIABLE names OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  string(REPLACE "\n" ";" names "${names}")
  set(environment
    "STREAM_HOST=${host}" PYTHONDONTWRITEBYTECODE=1 PYTHONPATH=${directory} ${arg_ENVIRONMENT})
  foreach(name IN LISTS names)
    add_test(NAME ${prefix}.${name} COMMAND ${Python3_EXECUTABLE} ${runner}/run_test.py ${name})
    set_tests_properties(${prefix}.${name} PROPERTIES
      LABELS pipeline TIMEOUT 120 SKIP_RETURN_CODE 77 ENVIRONMENT "${environment}")
  endforeach()
endfunction()
