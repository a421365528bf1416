# Configures choice/ with some parts of a libmp4v2, and compares the output with the expected text.
#
#   cmake -DPARTS=... -DARGUMENTS=... -DEXPECTED=... -DUNEXPECTED=...
#         -DMODULES=... -DHEADERS=... -DLIBRARY=... -DCOMPILER=... -DGENERATOR=... -DMAKE_PROGRAM=...
#         -DPKG_CONFIG=... -DDIRECTORY=... -P check_choice.cmake
#
# PARTS. In a prefix that CMake searches: header, library, broken_library. Beside it:
#   right_pkg_config   a pkg-config file of a complete library elsewhere
#   wrong_pkg_config   a file as libmp4v2's own build installs it, with the prefix for both folders
#   stale_pkg_config   a file with folders that do not exist
# EXPECTED and UNEXPECTED are regular expressions. Each run of blanks in the output becomes a single one.
cmake_minimum_required(VERSION 3.25)

set(prefix ${DIRECTORY}/prefix)
set(elsewhere ${DIRECTORY}/elsewhere)
file(REMOVE_RECURSE ${DIRECTORY})
file(MAKE_DIRECTORY ${prefix}/lib ${DIRECTORY}/pkgconfig)

function(add_header to)
  file(COPY ${HEADERS}/mp4v2 DESTINATION ${to}/include)
endfunction()

function(add_library to)
  file(COPY_FILE ${LIBRARY} ${to}/lib/libmp4v2.a)
endfunction()

function(add_pkg_config_file libdir includedir)
  file(WRITE ${DIRECTORY}/pkgconfig/mp4v2.pc
    "libdir=${libdir}\nincludedir=${includedir}\n\nName: mp4v2\nDescription: MP4 files\n"
    "Version: 2.1.3\nLibs: -L\${libdir} -lmp4v2\nCflags: -I\${includedir}\n")
endfunction()

foreach(part IN LISTS PARTS)
  if(part STREQUAL "header")
    add_header(${prefix})
  elseif(part STREQUAL "library")
    add_library(${prefix})
  elseif(part STREQUAL "broken_library")
    file(WRITE ${prefix}/lib/libmp4v2.a "no archive")
  elseif(part STREQUAL "right_pkg_config")
    file(MAKE_DIRECTORY ${elsewhere}/lib)
    add_header(${elsewhere})
    add_library(${elsewhere})
    add_pkg_config_file(${elsewhere}/lib ${elsewhere}/include)
  elseif(part STREQUAL "wrong_pkg_config")
    add_pkg_config_file(${prefix}/ ${prefix}/)
  elseif(part STREQUAL "stale_pkg_config")
    add_pkg_config_file(${DIRECTORY}/removed/lib ${DIRECTORY}/removed/include)
  else()
    message(FATAL_ERROR "no such part: ${part}")
  endif()
endforeach()

# An installed libmp4v2 of the system must not be found.
set(ENV{PKG_CONFIG_LIBDIR} ${DIRECTORY}/pkgconfig)
unset(ENV{PKG_CONFIG_PATH})
execute_process(
  COMMAND ${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/choice -B ${DIRECTORY}/build ${ARGUMENTS}
          -G ${GENERATOR} -DCMAKE_MAKE_PROGRAM=${MAKE_PROGRAM}
          -DMODULES=${MODULES} -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${COMPILER}
          -DPKG_CONFIG_EXECUTABLE=${PKG_CONFIG} -DCMAKE_FIND_USE_CMAKE_SYSTEM_PATH=OFF
          -DCMAKE_FIND_USE_SYSTEM_ENVIRONMENT_PATH=OFF
  OUTPUT_VARIABLE output ERROR_VARIABLE output)
string(REGEX REPLACE "[ \n]+" " " output "${output}")
if(NOT output MATCHES "${EXPECTED}")
  message(FATAL_ERROR "'${EXPECTED}' is not in:\n${output}")
endif()
if(UNEXPECTED AND output MATCHES "${UNEXPECTED}")
  message(FATAL_ERROR "'${UNEXPECTED}' is in:\n${output}")
endif()
file(REMOVE_RECURSE ${DIRECTORY})
