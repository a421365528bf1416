#include "argument_path.h"

namespace host {

std::filesystem::path PathOfArgument(const std::string& argument) { return argument; }

}  // namespace host
