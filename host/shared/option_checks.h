// What the hosts' command lines share: checks of values, the help text and the error line.
#ifndef HOST_SHARED_OPTION_CHECKS_H_
#define HOST_SHARED_OPTION_CHECKS_H_

#include <CLI/CLI.hpp>
#include <string>

namespace host {

// Finite, and at most kMaxSeconds (option_checks.cc).
CLI::Validator SecondsFromZero();
CLI::Validator SecondsAboveZero();
CLI::Validator NotEmpty();

// The help text without trailing line breaks.
std::string HelpText(const CLI::App& app);

// One line that names the error in the command line of `program`.
std::string RefusalText(const CLI::ParseError& error, const std::string& program);

}  // namespace host

#endif  // HOST_SHARED_OPTION_CHECKS_H_
