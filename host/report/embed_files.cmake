# Writes a C++ source that contains the bytes of files:
#
#   cmake -DOUTPUT=... -DSTYLES=a.css,b.css -DSCRIPTS=a.js,b.js -DPAGE=page.html -P embed_files.cmake
#
# The bytes are an array of numbers: compilers limit the length of string literals, but not of arrays.
cmake_minimum_required(VERSION 3.25)

# append_function(NAME FILES) - adds a function that returns the files concatenated, each ending with a line break.
function(append_function name files)
  string(REPLACE "," ";" files "${files}")
  set(bytes "")
  foreach(file IN LISTS files)
    file(STRINGS ${file} ends REGEX "</(script|style)")
    if(ends AND NOT file STREQUAL PAGE)
      message(FATAL_ERROR "${file} contains the end tag of the element that it is embedded in: ${ends}")
    endif()
    file(READ ${file} hex HEX)
    string(APPEND bytes "${hex}0a")
  endforeach()
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${bytes}")
  string(REGEX REPLACE "(................................................................................)"
    "\\1\n" bytes "${bytes}")
  file(APPEND ${OUTPUT}.new
    "std::string_view ${name}() {\n"
    "  static constexpr unsigned char kBytes[] = {\n${bytes}};\n"
    "  return {reinterpret_cast<const char*>(kBytes), sizeof(kBytes)};\n"
    "}\n\n")
endfunction()

file(WRITE ${OUTPUT}.new
  "// Made by embed_files.cmake.\n"
  "#include \"web_files.h\"\n\n"
  "namespace report {\n\n")
append_function(WebStyles "${STYLES}")
append_function(WebScripts "${SCRIPTS}")
append_function(WebPage "${PAGE}")
file(APPEND ${OUTPUT}.new "}  // namespace report\n")
file(RENAME ${OUTPUT}.new ${OUTPUT})
