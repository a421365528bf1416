# What every target of the project is compiled with: warnings as errors, and the sanitizers asked for.
add_library(stream_options INTERFACE)

if(MSVC)
  target_compile_options(stream_options INTERFACE /W4 /WX /utf-8 /permissive-)
else()
  target_compile_options(stream_options INTERFACE
    -Wall -Wextra -Wpedantic -Werror -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
    -Wnon-virtual-dtor -Woverloaded-virtual -Wnull-dereference -Wimplicit-fallthrough)
endif()

if(STREAM_SANITIZE)
  target_compile_options(stream_options INTERFACE
    -fsanitize=${STREAM_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(stream_options INTERFACE -fsanitize=${STREAM_SANITIZE})
endif()

# How a class is marked as exported when the library itself is compiled.
if(WIN32)
  set(STREAM_EXPORT_ATTRIBUTE "__declspec(dllexport)")
else()
  set(STREAM_EXPORT_ATTRIBUTE "__attribute__((visibility(\"default\")))")
endif()
