# The component is built folder by folder: each is an object library with an include root of its own. A header
# "ts/ts_demux.h" is the file ts/include/ts/ts_demux.h, and is found only by targets that link stream_ts. So an
# include against the order of the folders does not compile. The order:
#
#   stream_platform <- stream_common <- the formats <- stream_facade;  stream_ts <- stream_hls
#
# stream_contract, the public headers, is at the ground: they include nothing of the component.
#
# Defines two targets for what is made of the whole component:
#
#   stream_core      the objects of all folders and the libraries that they need; no headers
#   stream_headers   the headers of all folders, for tests, benchmarks and fuzzers
add_library(stream_core INTERFACE)
add_library(stream_contract INTERFACE)
target_include_directories(stream_contract INTERFACE ${PROJECT_SOURCE_DIR}/public)
add_library(stream_headers INTERFACE)
target_link_libraries(stream_headers INTERFACE stream_contract)
foreach(folder IN LISTS STREAM_COMPONENT_FOLDERS)
  if(IS_DIRECTORY ${PROJECT_SOURCE_DIR}/${folder}/include)
    target_include_directories(stream_headers INTERFACE ${PROJECT_SOURCE_DIR}/${folder}/include)
  endif()
endforeach()

# stream_add_folder(NAME SOURCES source... [USES target...])
#
# Adds the current folder to the component, as the target stream_NAME. USES lists the folders whose headers it may
# include, and other libraries; who uses this folder may include them too.
function(stream_add_folder name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;USES")
  set(target stream_${name})
  add_library(${target} OBJECT ${arg_SOURCES})
  if(IS_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}/include)
    target_include_directories(${target} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/include)
  endif()
  target_link_libraries(${target} PUBLIC ${arg_USES} PRIVATE stream_options)
  target_compile_options(${target} PRIVATE ${STREAM_COMPONENT_OPTIONS}
    $<$<CXX_COMPILER_ID:Clang>:${STREAM_LOCK_CHECKS}>)
  target_compile_definitions(${target} PRIVATE "STREAM_DOWNLOADER_API=${STREAM_EXPORT_ATTRIBUTE}")
  # In a unity build each folder is one source, except for sources with the system's macros.
  set_target_properties(${target} PROPERTIES UNITY_BUILD_BATCH_SIZE 0)
  set(system_sources ${arg_SOURCES})
  list(FILTER system_sources INCLUDE REGEX "_windows\\.cc$")
  set_source_files_properties(${system_sources} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)

  target_sources(stream_core INTERFACE $<TARGET_OBJECTS:${target}>)
  target_link_libraries(stream_core INTERFACE $<LINK_ONLY:${target}>)
  set_property(GLOBAL APPEND PROPERTY STREAM_FOLDER_TARGETS ${target})
endfunction()
