# Whether the player with a window can be built: STREAM_BUILD_PLAYER, which is ON where SDL2 and the
# libraries of FFmpeg are installed. Defines the target PkgConfig::player_libraries then.
set(player_found OFF)
if(NOT CMAKE_CROSSCOMPILING)  # pkg-config would tell of the machine that builds
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
  message(STATUS "Player with a window: left out (SDL2 and libavcodec are not both installed, or not wanted)")
endif()
