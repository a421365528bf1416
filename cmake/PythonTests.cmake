# stream_add_python_tests(PREFIX DIRECTORY [MODULES] [ENVIRONMENT name=value...])
#
# Each class in the files *_test.py of DIRECTORY becomes one CTest test and one process, named PREFIX.module.Class.
# With MODULES each module becomes one test, named PREFIX.module, and its classes share expensive resources. The
# results of the cases are written to test-results/<name>.xml in the build tree. The tests run the console host and
# can import modules from tests/e2e.
find_package(Python3 REQUIRED COMPONENTS Interpreter)

# stream_list_python_tests(DIRECTORY BY_MODULE NAMES) - the names of the tests. For each test the variable
# cases_<name> is set to the number of its cases.
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
  # A host built for another system is run by its emulator.
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
    math(EXPR limit "60 + 60 * ${cases_${name}}")  # detects hangs only: nothing takes this long
    set_tests_properties(${test} PROPERTIES
      LABELS pipeline TIMEOUT ${limit} SKIP_RETURN_CODE 77 ENVIRONMENT "${environment}")
  endforeach()
endfunction()
