// Paths as they come on the command line.
#ifndef HOST_SHARED_ARGUMENT_PATH_H_
#define HOST_SHARED_ARGUMENT_PATH_H_

#include <filesystem>
#include <string>

namespace host {

// The path that a command-line argument names, whatever encoding the system hands arguments over
// in.
std::filesystem::path PathOfArgument(const std::string& argument);

}  // namespace host

#endif  // HOST_SHARED_ARGUMENT_PATH_H_
