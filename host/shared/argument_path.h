// Paths from the command line.
#ifndef HOST_SHARED_ARGUMENT_PATH_H_
#define HOST_SHARED_ARGUMENT_PATH_H_

#include <filesystem>
#include <string>

namespace host {

// Converts a command-line argument to a path, whatever encoding the system uses for arguments.
std::filesystem::path PathOfArgument(const std::string& argument);

}  // namespace host

#endif  // HOST_SHARED_ARGUMENT_PATH_H_
