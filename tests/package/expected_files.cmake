# The files of a package. None may be missing. The test sets LIBDIR, SUFFIX, REPORT and PLAYER.
function(expect_files prefix)
  set(files
    bin/stream_host${SUFFIX} include/stream_downloader.h include/stream_player.h include/stream_downloader_c.h
    ${LIBDIR}/cmake/stream_downloader/stream_downloader-config.cmake
    ${LIBDIR}/cmake/stream_downloader/stream_downloader-config-version.cmake
    share/licenses/stream_downloader/CLI11.txt share/licenses/stream_downloader/nlohmann-json.txt)
  if(REPORT)
    list(APPEND files share/licenses/stream_downloader/uPlot.txt)
  endif()
  if(PLAYER)
    list(APPEND files bin/stream_player${SUFFIX})
  endif()
  if(SUFFIX STREQUAL ".exe")
    list(APPEND files
      bin/stream_downloader.dll ${LIBDIR}/libstream_downloader.dll.a ${LIBDIR}/stream_downloader.lib
      bin/stream_downloader_c.dll ${LIBDIR}/libstream_downloader_c.dll.a ${LIBDIR}/stream_downloader_c.lib
      share/licenses/stream_downloader/curl.txt share/licenses/stream_downloader/zlib.txt
      share/licenses/stream_downloader/gcc-runtime.txt
      share/licenses/stream_downloader/mingw-w64-runtime.txt)
  else()
    list(APPEND files
      ${LIBDIR}/libstream_downloader.so ${LIBDIR}/pkgconfig/stream_downloader.pc
      ${LIBDIR}/libstream_downloader_c.so ${LIBDIR}/pkgconfig/stream_downloader_c.pc)
  endif()
  foreach(file IN LISTS files)
    if(NOT EXISTS ${prefix}/${file})
      message(FATAL_ERROR "the package lacks ${file}")
    endif()
  endforeach()
endfunction()
