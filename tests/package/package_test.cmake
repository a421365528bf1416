# Installs or unpacks the package into WORK/package, builds the consumer against it in a separate folder, and plays
# a file with it.
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/expected_files.cmake)

file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
set(prefix ${WORK}/package)

function(run)
  execute_process(COMMAND ${ARGN} WORKING_DIRECTORY ${WORK} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

function(unpack_archive)
  run(${CMAKE_CPACK_COMMAND} --config ${BUILD}/CPackConfig.cmake -B ${WORK}/packed)
  file(GLOB archives ${WORK}/packed/stream_downloader-*.zip
    ${WORK}/packed/stream_downloader-*.tar.gz)
  list(LENGTH archives count)
  if(NOT count EQUAL 1)
    message(FATAL_ERROR "expected one archive, found: ${archives}")
  endif()
  file(ARCHIVE_EXTRACT INPUT ${archives} DESTINATION ${WORK}/unpacked)
  file(GLOB top ${WORK}/unpacked/*)  # one folder, named for the version
  file(RENAME ${top} ${prefix})
endfunction()

if(FROM STREQUAL "install")
  run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix})
else()
  unpack_archive()
endif()
expect_files(${prefix})

set(found -Dstream_downloader_DIR=${prefix}/${LIBDIR}/cmake/stream_downloader)
if(PKG_CONFIG)
  set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIBDIR}/pkgconfig)
  set(found -DCONSUMER_USES_PKG_CONFIG=ON)
endif()
if(TOOLCHAIN)
  list(APPEND found -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN})
else()
  list(APPEND found -DCMAKE_C_COMPILER=${C_COMPILER} -DCMAKE_CXX_COMPILER=${CXX_COMPILER})
endif()
# configure_apart(ROOT FOLDER BUILD [FOLDER...]) - configures a copy of the folder below ROOT, and of further folders
# that it needs, so that nothing else of the tree can be reached.
function(configure_apart root folder build)
  foreach(copied IN ITEMS ${folder} ${ARGN})
    cmake_path(GET copied PARENT_PATH parent)
    file(COPY ${root}/${copied} DESTINATION ${WORK}/sources-${build}/${parent})
  endforeach()
  run(${CMAKE_COMMAND} -S sources-${build}/${folder} -B ${build} -G ${GENERATOR} --no-warn-unused-cli
    -DCMAKE_BUILD_TYPE=Release ${found})
endfunction()

configure_apart(${CMAKE_CURRENT_LIST_DIR} consumer build)
run(${CMAKE_COMMAND} --build build)

run(${EMULATOR} ${MAKE_SAMPLE} sample.ts)
set(address file://${WORK}/sample.ts)
if(EMULATOR)
  string(REPLACE "/" "\\" address ${WORK}/sample.ts)
  set(address "file://Z:${address}")  # the drive on which wine shows the root
endif()
run(${EMULATOR} ${WORK}/build/consumer${SUFFIX} ${address})

# A host in C, in a project without C++.
if(C_HOST)
  if(PKG_CONFIG)
    run(pkg-config --cflags --libs stream_downloader_c OUTPUT_FILE c_options)
    run(${C_COMPILER} -std=c99 ${SOURCES}/examples/c/play.c -o play @c_options -pthread)
    run(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${prefix}/${LIBDIR} ./play ${address} 1)
  else()
    configure_apart(${SOURCES} examples/c c)
    run(${CMAKE_COMMAND} --build c)
    run(${EMULATOR} ${WORK}/c/play${SUFFIX} ${address} 1)
  endif()
endif()

# The packaged hosts find their library.
run(${EMULATOR} ${prefix}/bin/stream_host${SUFFIX} ${address} --expect-frames 1)
if(PLAYER)
  run(${prefix}/bin/stream_player${SUFFIX} --help)  # there may be no display
endif()
if(CONSOLE_HOST)
  # The console host, too, is configured separately and finds all that it needs. Of its sources only main.cc is
  # compiled: it alone uses the library, and it includes nearly all headers of the host. The other sources compile
  # in the tree, where they see the same headers as here. The consumer already shows that a program links.
  configure_apart(${SOURCES} host/console host host/shared platform/host)
  run(${CMAKE_COMMAND} --build host --target ${WORK}/sources-host/host/console/main.cc^)
endif()
