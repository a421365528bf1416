# stream_add_python_tests(PREFIX DIRECTORY [MODULES] [ENVIRONMENT name=value...])
#
# Each class of the *_test.py in DIRECTORY is one CTest test and one process, named
# PREFIX.module.Class; with MODULES each module is, named PREFIX.module, whose classes share what is
# expensive to start. Results of the single cases go to test-results/<name>.xml in the build tree.
# They play with the console host, and find what is in tests/e2e.
find_package(Python3 REQUIRED COMPONENTS Interpreter)

# stream_list_python_tests(DIRECTORY BY_MODULE NAMES) - the names of the tests; for each one the
# variable cases_<name> has the number of its cases.
function(stream_list_python_tests directory by_module names)
  execute_process(
    COMMAND ${CMAKE_COMMAND} -E env PYTHONDONTWRITEBYTECODE=1
            ${Python3_EXECUTABLE} ${PROJECT_SOURCE_DIR}/tests/e2e/list_tests.py ${directory}
    OUTPUT_VARIABLE classes OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  string(REPLACE "\n" ";" classes "${classes}")
  foreach(class IN LISTS classes)
    string(REGEX MATCH "^(([^ ]+)\\.[^. ]+) ([0-9]+)$" matched "${class}")
    set(name ${CMAKE_MATCH_1})
    if(by_module)
      set(name ${CMAKE_MATCH_2})
    endif()
    list(APPEND found ${name})
    math(EXPR cases_${name} "${cases_${name}} + ${CMAKE_MATCH_3}")
    set(cases_${name} ${cases_${name}} PARENT_SCOPE)
  endforeach()
  list(REMOVE_DUPLICATES found)
  set(${names} ${found} PARENT_SCOPE)
endfunction()

function(stream_add_python_tests prefix directory)
  cmake_parse_arguments(PARSE_ARGV 2 arg "MODULES" "" "ENVIRONMENT")
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${directory}/*.py)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${sources})
  # Where the host was built for another system, its emulator runs it.
  set(host "'$<TARGET_FILE:stream_host>'")
  if(CMAKE_CROSSCOMPILING_EMULATOR)
    set(host "'${CMAKE_CROSSCOMPILING_EMULATOR}' ${host}")
  endif()
  set(environment "STREAM_HOST=${host}" STREAM_SAMPLES=${STREAM_SAMPLES}
    PYTHONDONTWRITEBYTECODE=1 PYTHONPATH=${directory} ${arg_ENVIRONMENT})

  stream_list_python_tests(${directory} ${arg_MODULES} names)
  foreach(name IN LISTS names)
    set(test ${prefix}.${name})
    add_test(NAME ${test}
      COMMAND ${Python3_EXECUTABLE} ${PROJECT_SOURCE_DIR}/tests/e2e/run_test.py
              --xml ${PROJECT_BINARY_DIR}/test-results/${test}.xml ${name})
    math(EXPR limit "60 + 60 * ${cases_${name}}")  # of a hang: nothing takes as long
    set_tests_properties(${test} PROPERTIES
      LABELS pipeline TIMEOUT ${limit} SKIP_RETURN_CODE 77 ENVIRONMENT "${environment}")
  endforeach()
endfunction()
