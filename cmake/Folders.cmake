# The folders of the component, each before those that use it. Each is built into the library as the target of its
# CMakeLists.txt, checked for its includes, and counted by scripts/coverage.sh. A folder with sources that is in none
# of these lists fails the test Structure.EveryFolderIsListed.
set(STREAM_COMPONENT_FOLDERS platform common ts hls flv isobmff mp4 public msvc)
# Those of them that are formats: the facade uses each.
set(STREAM_FORMAT_FOLDERS ${STREAM_COMPONENT_FOLDERS})
list(REMOVE_ITEM STREAM_FORMAT_FOLDERS platform common isobmff public msvc)
# Separate libraries that use the component through its public headers. They are checked and counted too.
set(STREAM_INTERFACE_FOLDERS c_interface)
# The other folders with C or C++ sources.
set(STREAM_OTHER_FOLDERS host examples tests bench fuzz)

# stream_source_folders(ROOT RESULT) - the folders below ROOT with C or C++ sources, except build trees.
function(stream_source_folders root result)
  set(found "")
  file(GLOB children RELATIVE ${root} ${root}/*)
  foreach(child IN LISTS children)
    if(NOT IS_DIRECTORY ${root}/${child} OR child MATCHES "^(build|out|\\..*)$" OR
       EXISTS ${root}/${child}/CMakeCache.txt)
      continue()
    endif()
    file(GLOB_RECURSE sources ${root}/${child}/*.h ${root}/${child}/*.cc ${root}/${child}/*.c)
    if(sources)
      list(APPEND found ${child})
    endif()
  endforeach()
  set(${result} ${found} PARENT_SCOPE)
endfunction()
