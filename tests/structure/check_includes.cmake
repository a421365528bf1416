# Fails if an include runs against the order of the folders.
#
#   cmake -DSOURCE_DIR=... -P check_includes.cmake
#
# The order is: msvc -> public -> the formats (hls, ts, flv, mp4) -> common, and hls -> ts for the demultiplexer.
# isobmff is independent: mp4 includes it only as <mp4v2/mp4v2.h>.
# stream_player.h is the contract with the host and includes nothing. Below the facade only common/player_port and
# common/player_lines include it.
#
# c_interface uses the component as a host does: through its public headers alone.
#
# The hosts include headers without a folder name. Of the component they see only its public headers:
# host/console and host/player -> host/shared -> host/report -> public.
cmake_minimum_required(VERSION 3.25)

include(${SOURCE_DIR}/cmake/Folders.cmake)

set(failures "")
stream_source_folders(${SOURCE_DIR} source_folders)
foreach(folder IN LISTS source_folders)
  if(NOT folder IN_LIST STREAM_COMPONENT_FOLDERS AND NOT folder IN_LIST STREAM_INTERFACE_FOLDERS AND
     NOT folder IN_LIST STREAM_OTHER_FOLDERS)
    list(APPEND failures "${folder} is not among the folders in cmake/Folders.cmake")
  endif()
endforeach()

set(formats hls ts flv mp4)
set(allowed_public public ${formats} common)
set(allowed_hls hls ts common)
set(allowed_ts ts common)
set(allowed_flv flv common)
set(allowed_mp4 mp4 common mp4v2)
set(allowed_isobmff isobmff)
set(allowed_common common)
set(allowed_c_interface c_interface public)
set(allowed_msvc msvc public common)
set(exceptions
  "common/player_lines.cc>public/stream_player.h" "common/player_port.cc>public/stream_player.h")

set(checked 0)
foreach(folder IN LISTS STREAM_COMPONENT_FOLDERS STREAM_INTERFACE_FOLDERS)
  if(NOT DEFINED allowed_${folder})
    list(APPEND failures "there is no rule here for what ${folder} may include")
  endif()
  file(GLOB_RECURSE sources RELATIVE ${SOURCE_DIR}
    ${SOURCE_DIR}/${folder}/*.h ${SOURCE_DIR}/${folder}/*.cc)
  foreach(source ${sources})
    file(STRINGS ${SOURCE_DIR}/${source} lines REGEX "^[ \t]*#[ \t]*include[ \t]*\"")
    foreach(line ${lines})
      string(REGEX REPLACE "^[^\"]*\"([^\"]*)\".*" "\\1" target "${line}")
      math(EXPR checked "${checked} + 1")
      if(NOT target MATCHES "/")
        continue()  # a header in the same folder
      endif()
      string(REGEX REPLACE "/.*" "" target_folder "${target}")
      if(NOT target_folder IN_LIST allowed_${folder} AND
         NOT "${source}>${target}" IN_LIST exceptions)
        list(APPEND failures "${source} includes ${target}")
      endif()
    endforeach()
  endforeach()
endforeach()

stream_source_folders(${SOURCE_DIR}/host host_folders)
set(allowed_host_shared host/shared host/report public)
set(allowed_host_report host/report public)
set(allowed_host_console host/console host/shared public)
set(allowed_host_player host/player host/shared public)

# is_in_one_of(FILE FOLDERS RESULT)
function(is_in_one_of file folders result)
  set(${result} OFF PARENT_SCOPE)
  foreach(folder IN LISTS folders)
    if(EXISTS ${SOURCE_DIR}/${folder}/${file})
      set(${result} ON PARENT_SCOPE)
    endif()
  endforeach()
endfunction()

foreach(folder IN LISTS host_folders)
  if(NOT DEFINED allowed_host_${folder})
    list(APPEND failures "there is no rule here for what host/${folder} may include")
  endif()
  file(GLOB_RECURSE sources RELATIVE ${SOURCE_DIR}
    ${SOURCE_DIR}/host/${folder}/*.h ${SOURCE_DIR}/host/${folder}/*.cc)
  foreach(source ${sources})
    file(STRINGS ${SOURCE_DIR}/${source} lines REGEX "^[ \t]*#[ \t]*include[ \t]*\"")
    foreach(line ${lines})
      string(REGEX REPLACE "^[^\"]*\"([^\"]*)\".*" "\\1" target "${line}")
      math(EXPR checked "${checked} + 1")
      is_in_one_of("${target}" "${allowed_host_${folder}}" is_allowed)
      if(NOT is_allowed)
        list(APPEND failures "${source} includes ${target}")
      endif()
    endforeach()
  endforeach()
endforeach()

if(checked EQUAL 0)
  message(FATAL_ERROR "no include to check was found below '${SOURCE_DIR}'")
endif()
if(failures)
  list(JOIN failures "\n  " text)
  message(FATAL_ERROR "includes against the order of the folders, and folders that are not checked:\n  ${text}")
endif()
message(STATUS "${checked} includes follow the order of the folders")
