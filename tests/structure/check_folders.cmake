# Fails if a folder is in none of the lists of cmake/Folders.cmake, and so in none of the checks, or if an include
# gets around the include roots, on which the order of the folders depends: with a path that leaves its folder, or
# through a folder named include.
#
#   cmake -DSOURCE_DIR=... -P check_folders.cmake
cmake_minimum_required(VERSION 3.25)

include(${SOURCE_DIR}/cmake/Folders.cmake)

set(failures "")
stream_source_folders(${SOURCE_DIR} folders)
foreach(folder IN LISTS folders)
  if(NOT folder IN_LIST STREAM_COMPONENT_FOLDERS AND NOT folder IN_LIST STREAM_INTERFACE_FOLDERS AND
     NOT folder IN_LIST STREAM_OTHER_FOLDERS)
    list(APPEND failures "${folder} is not among the folders in cmake/Folders.cmake")
  endif()
endforeach()

set(checked 0)
foreach(folder IN LISTS STREAM_COMPONENT_FOLDERS STREAM_INTERFACE_FOLDERS ITEMS host)
  file(GLOB_RECURSE sources RELATIVE ${SOURCE_DIR}
    ${SOURCE_DIR}/${folder}/*.h ${SOURCE_DIR}/${folder}/*.cc)
  foreach(source IN LISTS sources)
    file(STRINGS ${SOURCE_DIR}/${source} lines REGEX "^[ \t]*#[ \t]*include")
    foreach(line IN LISTS lines)
      math(EXPR checked "${checked} + 1")
      if(line MATCHES "\\.\\./|[\"</]include/|[\"<]/")
        list(APPEND failures "${source}: ${line}")
      endif()
    endforeach()
  endforeach()
endforeach()

if(checked EQUAL 0)
  message(FATAL_ERROR "no include to check was found below '${SOURCE_DIR}'")
endif()
if(failures)
  list(JOIN failures "\n  " text)
  message(FATAL_ERROR "folders that are not checked, and includes that get around the include roots:\n  ${text}")
endif()
message(STATUS "${checked} includes go through the include roots")
