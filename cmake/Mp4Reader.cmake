# Selects the implementation of <mp4v2/mp4v2.h>: the bundled reader in isobmff/ or, on request, an installed
# libmp4v2, which has a header of the same name.
#
#   -DMP4_READER=bundled     the default
#   -DMP4_READER=installed   libmp4v2; an error if no program builds with it
#   -DMP4_READER=auto        libmp4v2 if a program builds with it, otherwise the bundled reader
#   -DCMAKE_PREFIX_PATH=...  additional prefixes to search for libmp4v2
#
# Defines the target mp4_reader, STREAM_MP4_READER, the name of the selected reader, and
# STREAM_MP4_OFFSETS_BY_ADAPTER, whether mp4/ has to add what an installed reader lacks.
include(CheckCXXSourceCompiles)

set(MP4_READER bundled CACHE STRING "The MP4 reader: bundled, installed (libmp4v2) or auto")
set_property(CACHE MP4_READER PROPERTY STRINGS bundled installed auto)
if(NOT MP4_READER MATCHES "^(auto|installed|bundled)$")
  message(FATAL_ERROR "MP4_READER is '${MP4_READER}': it must be bundled, installed or auto")
endif()

# The next two functions each search in one way. RESULT is a target to link, or empty if nothing was found.
# RESULT_place describes where the library is, for messages.
function(stream_mp4v2_by_pkg_config result)
  set(${result} "" PARENT_SCOPE)
  if(CMAKE_CROSSCOMPILING)
    return()  # pkg-config describes the build machine
  endif()
  find_package(PkgConfig QUIET)
  if(PkgConfig_FOUND)
    pkg_check_modules(mp4v2 QUIET IMPORTED_TARGET GLOBAL mp4v2)
  endif()
  if(TARGET PkgConfig::mp4v2)
    # Remove folders that do not exist: they would end the configure step instead of failing a check.
    get_target_property(folders PkgConfig::mp4v2 INTERFACE_INCLUDE_DIRECTORIES)
    set(existing "")
    foreach(folder IN LISTS folders)
      if(IS_DIRECTORY ${folder})
        list(APPEND existing ${folder})
      endif()
    endforeach()
    set_target_properties(PkgConfig::mp4v2 PROPERTIES INTERFACE_INCLUDE_DIRECTORIES "${existing}")
    set(${result} PkgConfig::mp4v2 PARENT_SCOPE)
    set(${result}_place "by pkg-config" PARENT_SCOPE)
  endif()
endfunction()

function(stream_mp4v2_by_search result)
  set(${result} "" PARENT_SCOPE)
  find_path(MP4V2_INCLUDE_DIR mp4v2/mp4v2.h)
  find_library(MP4V2_LIBRARY NAMES mp4v2 libmp4v2)
  mark_as_advanced(MP4V2_INCLUDE_DIR MP4V2_LIBRARY)
  if(MP4V2_INCLUDE_DIR AND MP4V2_LIBRARY)
    add_library(mp4v2_found INTERFACE IMPORTED GLOBAL)
    target_include_directories(mp4v2_found SYSTEM INTERFACE ${MP4V2_INCLUDE_DIR})
    target_link_libraries(mp4v2_found INTERFACE ${MP4V2_LIBRARY})
    set(${result} mp4v2_found PARENT_SCOPE)
    set(${result}_place "in ${MP4V2_LIBRARY}" PARENT_SCOPE)
  endif()
endfunction()

# stream_mp4v2_compiles(RESULT TARGET BODY) - whether a program with BODY in main builds with the library. The
# result is not cached, since the library may have changed since the last run.
function(stream_mp4v2_compiles result target body)
  set(CMAKE_REQUIRED_LIBRARIES ${target})
  set(CMAKE_REQUIRED_QUIET ON)
  unset(stream_mp4v2_check CACHE)
  check_cxx_source_compiles(
    "#include <mp4v2/mp4v2.h>\nint main() { ${body} return 0; }" stream_mp4v2_check)
  set(${result} ${stream_mp4v2_check} PARENT_SCOPE)
  unset(stream_mp4v2_check CACHE)
endfunction()

# stream_find_mp4v2(TARGET PLACE FAILED) - the first libmp4v2 with which a program builds, and its location; both
# are empty if there is none. FAILED lists the locations of libraries with which no program builds: a library's
# pkg-config file may be wrong while a plain search finds the library.
function(stream_find_mp4v2 target place failed)
  set(${target} "" PARENT_SCOPE)
  set(${place} "" PARENT_SCOPE)
  set(places_that_failed "")
  foreach(way pkg_config search)
    cmake_language(CALL stream_mp4v2_by_${way} candidate)
    if(NOT candidate)
      continue()
    endif()
    stream_mp4v2_compiles(works ${candidate} "MP4Close(MP4Read(\"\"));")
    if(works)
      set(${target} ${candidate} PARENT_SCOPE)
      set(${place} ${candidate_place} PARENT_SCOPE)
      break()
    endif()
    message(STATUS "MP4 reader: a program with the libmp4v2 found ${candidate_place} does not build")
    list(APPEND places_that_failed ${candidate_place})
  endforeach()
  set(${failed} "${places_that_failed}" PARENT_SCOPE)
endfunction()

add_library(mp4_reader INTERFACE)
set(STREAM_MP4_READER bundled)
set(STREAM_MP4_OFFSETS_BY_ADAPTER OFF)
if(NOT MP4_READER STREQUAL "bundled")
  stream_find_mp4v2(mp4v2_target mp4v2_place mp4v2_failed)
  if(mp4v2_target)
    set(STREAM_MP4_READER installed)
  elseif(MP4_READER STREQUAL "installed" AND mp4v2_failed)
    list(JOIN mp4v2_failed " and " mp4v2_failed)
    message(FATAL_ERROR
      "MP4_READER is installed, but a program with the libmp4v2 found ${mp4v2_failed} does not build")
  elseif(MP4_READER STREQUAL "installed")
    message(FATAL_ERROR "MP4_READER is installed, but libmp4v2 was not found: see CMAKE_PREFIX_PATH")
  endif()
endif()

if(STREAM_MP4_READER STREQUAL "installed")
  target_link_libraries(mp4_reader INTERFACE ${mp4v2_target})
  # The published library lacks this function; the adapter then adds it.
  stream_mp4v2_compiles(mp4v2_has_offset ${mp4v2_target}
    "return MP4GetSampleFileOffset(MP4Read(\"\"), 1, 1) != 0;")
  if(mp4v2_has_offset)
    message(STATUS "MP4 reader: libmp4v2 found ${mp4v2_place}")
  else()
    message(STATUS "MP4 reader: libmp4v2 found ${mp4v2_place}, with file offsets by the adapter")
    target_compile_definitions(mp4_reader INTERFACE STREAM_MP4_OFFSETS_BY_ADAPTER)
    set(STREAM_MP4_OFFSETS_BY_ADAPTER ON)
  endif()
  # The library logs to the console itself. It is silenced if it has a function for that.
  stream_mp4v2_compiles(mp4v2_logs ${mp4v2_target} "MP4LogSetLevel(MP4_LOG_NONE);")
  if(mp4v2_logs)
    target_compile_definitions(mp4_reader INTERFACE STREAM_MP4_READER_LOGS)
  endif()
else()
  message(STATUS "MP4 reader: bundled")
  target_compile_definitions(mp4_reader INTERFACE STREAM_MP4_READER_BUNDLED)
  # A system include directory, as for an installed library: its C code does not follow our rules for C++.
  target_include_directories(mp4_reader SYSTEM INTERFACE ${CMAKE_CURRENT_LIST_DIR}/../isobmff/api)
endif()
