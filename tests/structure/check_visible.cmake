# Compiles a source with the include directories of a target: it includes the headers of VISIBLE, and fails if one of
# HIDDEN could be included too.
#
#   cmake -DCOMPILER=... -DDIRECTORIES=... -DDEFINITIONS=... -DVISIBLE=... -DHIDDEN=... -DSOURCE=... -P ...
cmake_minimum_required(VERSION 3.25)

# Expressions that are empty in this build leave empty items.
list(REMOVE_ITEM DIRECTORIES "")
list(REMOVE_ITEM DEFINITIONS "")
list(TRANSFORM DIRECTORIES PREPEND -I)
list(TRANSFORM DEFINITIONS PREPEND -D)

set(text "")
foreach(header IN LISTS VISIBLE)
  string(APPEND text "#include \"${header}\"\n")
endforeach()
foreach(header IN LISTS HIDDEN)
  string(APPEND text "#if __has_include(\"${header}\")\n#error ${header} can be included\n#endif\n")
endforeach()
file(WRITE ${SOURCE} "${text}")
execute_process(
  COMMAND ${COMPILER} -std=c++20 -fsyntax-only ${DIRECTORIES} ${DEFINITIONS} ${SOURCE}
  COMMAND_ERROR_IS_FATAL ANY)
