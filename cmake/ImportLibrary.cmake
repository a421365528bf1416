# stream_add_import_library(TARGET DEFINITION OUTPUT)
#
# Adds OUTPUT to the default build: an import library for link.exe and lld-link. GCC's linker makes one for GCC
# only. DEFINITION is a module-definition file with the exported names of TARGET's DLL. It needs no LIBRARY line,
# because the file name of the DLL is passed on the command line.
function(stream_add_import_library target definition output)
  find_program(STREAM_DLLTOOL NAMES llvm-dlltool DOC "Makes import libraries (Debian package llvm)" REQUIRED)
  add_custom_command(OUTPUT ${output}
    COMMAND ${STREAM_DLLTOOL} -m i386:x86-64 -D $<TARGET_FILE_NAME:${target}> -d ${definition} -l ${output}
    DEPENDS ${definition} VERBATIM)
  add_custom_target(${target}_import_library ALL DEPENDS ${output})
endfunction()
