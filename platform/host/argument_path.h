// Paths from the command line.
#ifndef PLATFORM_HOST_ARGUMENT_PATH_H_
#define PLATFORM_HOST_ARGUMENT_PATH_H_

#include <filesystem>
#include <string>

namespace host {

// Converts a command-line argument to a path, whatever encoding the system uses for arguments.
std::filesystem::path PathOfArgument(const std::string& argument);

}  // namespace host

#endif  // PLATFORM_HOST_ARGUMENT_PATH_H_
