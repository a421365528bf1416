// Exports CStreamDownloader::__autoclassinit2 from a library that Visual C++ builds. Visual C++
// generates this member under /sdl but does not export it, and hosts may be linked with it. In a
// library that GCC builds, public/auto_class_init.cc defines it.
#include <cstddef>
#include <cstring>

namespace stream {

extern "C" void MsvcAutoClassInit(void* facade, std::size_t size) { std::memset(facade, 0, size); }

}  // namespace stream
