// The member that Visual C++ makes under /sdl, and does not export: for hosts that were linked with
// it. Where GCC builds the library, the member of the class does.
#include <cstddef>
#include <cstring>

extern "C" void MsvcAutoClassInit(void* facade, std::size_t size) { std::memset(facade, 0, size); }
