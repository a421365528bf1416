# Refuses an include that runs against the order of the folders.
#
#   cmake -DSOURCE_DIR=... -P check_includes.cmake
#
# The order is: public -> the formats (hls, ts, flv, mp4) -> common, and hls -> ts for the demultiplexer.
# isobmff stands alone: mp4 knows it only as <mp4v2/mp4v2.h>.
# stream_player.h is the contract with the host and includes nothing; the one place below the facade
# that knows it is common/player_port.
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

if(checked EQUAL 0)
  message(FATAL_ERROR "no include was found to check below '${SOURCE_DIR}'")
endif()
if(failures)
  list(JOIN failures "\n  " text)
  message(FATAL_ERROR "includes that run the wrong way:\n  ${text}")
endif()
message(STATUS "${checked} includes run the right way")
