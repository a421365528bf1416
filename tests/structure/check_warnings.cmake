# Checks that warnings are errors in all presets but msvc, which is untested, and in no build without a preset:
# another compiler, or other optimisation, may warn about correct code.
#
#   cmake -DSOURCE_DIR=... -DDIRECTORY=... -DCOMPILER=... -DGENERATOR=... -DMAKE_PROGRAM=... -P ...
cmake_minimum_required(VERSION 3.25)

set(strict_presets dev release sanitized asan tsan coverage fuzz windows)
set(variable CMAKE_COMPILE_WARNING_AS_ERROR)

# --- A build without a preset ---

file(REMOVE_RECURSE ${DIRECTORY})
foreach(value "" ON)
  execute_process(
    COMMAND ${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/build_options -B ${DIRECTORY}
            -G ${GENERATOR} -DCMAKE_MAKE_PROGRAM=${MAKE_PROGRAM} -DCMAKE_CXX_COMPILER=${COMPILER}
            -DMODULES=${SOURCE_DIR}/cmake -DCMAKE_BUILD_TYPE=Release -D${variable}=${value}
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  file(READ ${DIRECTORY}/compile_commands.json commands)
  if(NOT commands MATCHES "[-/]W")
    message(FATAL_ERROR "no warnings are enabled in:\n${commands}")
  endif()
  string(REGEX MATCH "-Werror|/WX" is_strict "${commands}")
  if((value AND NOT is_strict) OR (is_strict AND NOT value))
    message(FATAL_ERROR "with ${variable}='${value}' the commands are:\n${commands}")
  endif()
endforeach()
file(REMOVE_RECURSE ${DIRECTORY})

# --- The presets ---

file(READ ${SOURCE_DIR}/CMakePresets.json presets)
string(JSON count LENGTH "${presets}" configurePresets)
math(EXPR last "${count} - 1")

# Returns the configure preset of this name, as JSON.
function(find_preset name result)
  foreach(i RANGE ${last})
    string(JSON found GET "${presets}" configurePresets ${i} name)
    if(found STREQUAL name)
      string(JSON preset GET "${presets}" configurePresets ${i})
      set(${result} "${preset}" PARENT_SCOPE)
      return()
    endif()
  endforeach()
  message(FATAL_ERROR "no such preset: ${name}")
endfunction()

# Returns the preset's own value, or the value that it inherits.
function(warning_as_error name result)
  find_preset(${name} preset)
  string(JSON value ERROR_VARIABLE unset GET "${preset}" cacheVariables ${variable})
  if(unset)
    string(JSON parent ERROR_VARIABLE is_root GET "${preset}" inherits)
    set(value OFF)
    if(NOT is_root)
      warning_as_error(${parent} value)
    endif()
  endif()
  set(${result} ${value} PARENT_SCOPE)
endfunction()

set(strict "")
foreach(i RANGE ${last})
  string(JSON name GET "${presets}" configurePresets ${i} name)
  warning_as_error(${name} value)
  if(value)
    list(APPEND strict ${name})
  endif()
endforeach()
if(NOT strict STREQUAL strict_presets)
  message(FATAL_ERROR "warnings are errors in: ${strict}; expected: ${strict_presets}")
endif()
