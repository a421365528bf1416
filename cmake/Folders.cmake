# The folders of the component: each is built into the library, checked for what it includes, and counts
# in scripts/coverage.sh. A folder with sources that is neither here nor among the others fails the test
# Structure.IncludesRunOneWay.
set(STREAM_COMPONENT_FOLDERS common ts hls flv isobmff mp4 public msvc)
# Libraries of their own that use the component through its public headers: checked and counted as well.
set(STREAM_INTERFACE_FOLDERS c_interface)
# The rest of the folders that hold C or C++ sources.
set(STREAM_OTHER_FOLDERS host examples tests bench fuzz)

# stream_source_folders(ROOT RESULT) - the folders below ROOT that hold C or C++ sources, but no build trees.
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
