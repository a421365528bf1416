# The content of cmake --install and CPack: the libraries with their public headers, the hosts that are built, a
# CMake package, pkg-config files on POSIX, and the licences of everything linked in.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/stream_downloader)
set(package_sources ${CMAKE_CURRENT_LIST_DIR}/package)

install(TARGETS stream_downloader stream_downloader_c
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES public/stream_downloader.h public/stream_player.h c_interface/stream_downloader_c.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(MINGW)  # CMake installs GCC's import libraries itself
  install(FILES
    ${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/stream_downloader.lib
    ${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/stream_downloader_c.lib
    DESTINATION ${CMAKE_INSTALL_LIBDIR})
endif()

foreach(host stream_host stream_player)
  if(NOT TARGET ${host})
    continue()
  endif()
  if(NOT WIN32)
    # The host finds the library relative to itself, wherever the package is unpacked.
    file(RELATIVE_PATH from_bin_to_lib
      ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
    set_target_properties(${host} PROPERTIES INSTALL_RPATH "$ORIGIN/${from_bin_to_lib}")
  endif()
  install(TARGETS ${host} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endforeach()

# Before 1.0 the binary interface may change with each minor version.
write_basic_package_version_file(stream_downloader-config-version.cmake
  COMPATIBILITY SameMinorVersion)
# The package lists its files explicitly: an exported target would make programs that use the library search for
# libcurl too.
configure_package_config_file(
  ${package_sources}/stream_downloader-config.cmake.in stream_downloader-config.cmake
  INSTALL_DESTINATION ${package_dir}
  PATH_VARS CMAKE_INSTALL_INCLUDEDIR CMAKE_INSTALL_BINDIR CMAKE_INSTALL_LIBDIR)
install(FILES
  ${PROJECT_BINARY_DIR}/stream_downloader-config.cmake
  ${PROJECT_BINARY_DIR}/stream_downloader-config-version.cmake
  DESTINATION ${package_dir})

if(NOT WIN32)
  # A relative path is valid wherever the package is unpacked.
  file(RELATIVE_PATH STREAM_PACKAGE_PREFIX_FROM_PKGCONFIG
    ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
  foreach(name stream_downloader stream_downloader_c)
    configure_file(${package_sources}/${name}.pc.in ${name}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
  endforeach()
endif()

# stream_install_licence(NAME PATTERN...) - installs the first file that matches one of the patterns.
function(stream_install_licence name)
  file(GLOB found ${ARGN})
  if(NOT found)
    message(WARNING "the licence of ${name} is not found and not packaged")
    return()
  endif()
  list(GET found 0 file)
  install(FILES ${file} DESTINATION ${CMAKE_INSTALL_DATADIR}/licenses/stream_downloader
    RENAME ${name}.txt)
endfunction()

set(debian_docs /usr/share/doc)
set(vcpkg_docs ${VCPKG_INSTALLED_DIR}/${VCPKG_TARGET_TRIPLET}/share)
if(TARGET stream_host)
  stream_install_licence(CLI11 ${debian_docs}/libcli11-dev/copyright ${vcpkg_docs}/cli11/copyright)
  stream_install_licence(nlohmann-json
    ${debian_docs}/nlohmann-json3-dev/copyright ${vcpkg_docs}/nlohmann-json/copyright)
endif()
if(WIN32)
  get_filename_component(curl_prefix ${CURL_DIR}/../../.. ABSOLUTE)
  stream_install_licence(curl
    ${curl_prefix}/share/licenses/curl/COPYING ${vcpkg_docs}/curl/copyright)
  if(TARGET stream_host)
    stream_install_licence(zlib
      ${debian_docs}/libz-mingw-w64-dev/copyright ${vcpkg_docs}/zlib/copyright)
  endif()
endif()
if(MINGW)
  stream_install_licence(gcc-runtime ${debian_docs}/gcc-mingw-w64-base/copyright)
  stream_install_licence(mingw-w64-runtime ${debian_docs}/mingw-w64-x86-64-dev/copyright)
endif()

set(CPACK_PACKAGE_VENDOR stream_downloader)
if(WIN32)
  set(CPACK_GENERATOR ZIP)
  set(CPACK_SYSTEM_NAME windows-x64)
else()
  set(CPACK_GENERATOR TGZ)
endif()
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)
