# Compiler options of every target in the project: warnings and the selected sanitizers. Warnings are errors if
# CMAKE_COMPILE_WARNING_AS_ERROR is set, as in all presets except msvc. Other compilers or optimisation levels may
# give false warnings.
add_library(stream_options INTERFACE)

if(MSVC)
  target_compile_options(stream_options INTERFACE /W4 /utf-8 /permissive-)
else()
  target_compile_options(stream_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnull-dereference
    -Wimplicit-fallthrough
    $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast>
    $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>
    $<$<COMPILE_LANGUAGE:CXX>:-Woverloaded-virtual>)
endif()

if(STREAM_SANITIZE)
  # The vptr check is off because the player is built separately from the component: its virtual table is part of
  # the contract, its run-time type information is not.
  target_compile_options(stream_options INTERFACE
    -fsanitize=${STREAM_SANITIZE} -fno-sanitize=vptr -fno-sanitize-recover=all
    -fno-omit-frame-pointer
    $<$<CXX_COMPILER_ID:GNU>:-Wno-stringop-overflow>)  # caused by the instrumentation itself
  target_link_options(stream_options INTERFACE -fsanitize=${STREAM_SANITIZE})
endif()

if(WIN32)  # libcurl's header includes the system's headers
  target_compile_definitions(stream_options INTERFACE NOMINMAX WIN32_LEAN_AND_MEAN)
endif()

# The attribute that exports a class while the library itself is compiled.
if(WIN32)
  set(STREAM_EXPORT_ATTRIBUTE "__declspec(dllexport)")
else()
  set(STREAM_EXPORT_ATTRIBUTE "__attribute__((visibility(\"default\")))")
endif()

# Clang's options that check who holds which mutex (platform/mutex.h). For the component only: tests look at guarded
# variables while no other thread runs.
set(STREAM_LOCK_CHECKS -Wthread-safety -Wthread-safety-beta)
