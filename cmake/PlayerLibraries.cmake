# Whether the player with a window can be built. STREAM_BUILD_PLAYER is ON by default if SDL2 and the FFmpeg
# libraries are installed. Then defines the target PkgConfig::player_libraries.
set(player_found OFF)
if(NOT CMAKE_CROSSCOMPILING)  # pkg-config describes the build machine
  find_package(PkgConfig QUIET)
  if(PkgConfig_FOUND)
    pkg_check_modules(player_libraries QUIET IMPORTED_TARGET
      sdl2>=2.0.18 libavcodec>=59 libavutil>=57.28 libswresample>=4.7 libswscale>=6)
    set(player_found ${player_libraries_FOUND})
  endif()
endif()
if(player_found)
  set(player_default ON)
else()
  set(player_default OFF)
endif()
option(STREAM_BUILD_PLAYER "Build the player with a window (SDL2, libavcodec)" ${player_default})
if(STREAM_BUILD_PLAYER AND NOT player_found)
  message(FATAL_ERROR "STREAM_BUILD_PLAYER is ON, but SDL2 or the libraries of FFmpeg were not found")
elseif(NOT STREAM_BUILD_PLAYER)
  message(STATUS "Player with a window: not built (SDL2 or libavcodec is missing, or STREAM_BUILD_PLAYER is OFF)")
endif()
