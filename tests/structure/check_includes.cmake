# Refuses an include that runs against the order of the folders.
#
#   cmake -DSOURCE_DIR=... -P check_includes.cmake
#
# The order is: public -> the formats (hls, ts, flv, mp4) -> common, and hls -> ts for the demultiplexer.
# isobmff stands alone: mp4 knows it only as <mp4v2/mp4v2.h>.
# stream_player.h is the contract with the host and includes nothing; the one place below the facade
# that knows it is common/player_port.
#
# The hosts name what they include without a folder, and see of the component its public headers only:
# host/console and host/player -> host/shared -> host/report -> public.
cmake_minimum_required(VERSION 3.25)

set(formats hls ts flv mp4)
set(allowed_public public ${formats} common)
set(allowed_hls hls ts common)
set(allowed_ts ts common)
set(allowed_flv flv common)
set(allowed_mp4 mp4 common mp4v2)
set(allowed_isobmff isobmff)
set(allowed_common common)
set(exceptions "common/player_port.cc>public/stream_player.h")

set(failures "")
set(checked 0)
foreach(folder public common isobmff ${formats})
  file(GLOB_RECURSE sources RELATIVE ${SOURCE_DIR}
    ${SOURCE_DIR}/${folder}/*.h ${SOURCE_DIR}/${folder}/*.cc)
  foreach(source ${sources})
    file(STRINGS ${SOURCE_DIR}/${source} lines REGEX "^[ \t]*#[ \t]*include[ \t]*\"")
    foreach(line ${lines})
      string(REGEX REPLACE "^[^\"]*\"([^\"]*)\".*" "\\1" target "${line}")
      math(EXPR checked "${checked} + 1")
      if(NOT target MATCHES "/")
        continue()  # a neighbour in the same folder
      endif()
      string(REGEX REPLACE "/.*" "" target_folder "${target}")
      if(NOT target_folder IN_LIST allowed_${folder} AND
         NOT "${source}>${target}" IN_LIST exceptions)
        list(APPEND failures "${source} includes ${target}")
      endif()
    endforeach()
  endforeach()
endforeach()

set(host_folders shared report console player)
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

foreach(folder ${host_folders})
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
  message(FATAL_ERROR "no include was found to check below '${SOURCE_DIR}'")
endif()
if(failures)
  list(JOIN failures "\n  " text)
  message(FATAL_ERROR "includes that run the wrong way:\n  ${text}")
endif()
message(STATUS "${checked} includes run the right way")
