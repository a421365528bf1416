# Configures and builds the host outside the tree.
cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE ${WORK}/build ${WORK}/source)
file(COPY ${SOURCE}/ DESTINATION ${WORK}/source)
execute_process(
  COMMAND ${CMAKE_COMMAND} -S ${WORK}/source -B ${WORK}/build -G ${GENERATOR}
          -DCMAKE_TOOLCHAIN_FILE=${WORK}/source/toolchain.cmake -DCMAKE_BUILD_TYPE=Release
          -DCMAKE_RUNTIME_OUTPUT_DIRECTORY=${WORK}/host -Dstream_downloader_DIR=${PACKAGE} -DKERNEL32=${KERNEL32}
  COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK}/build COMMAND_ERROR_IS_FATAL ANY)
