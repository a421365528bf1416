// What the command lines of the hosts have in common: checks of values, and the line that refuses.
#ifndef HOST_SHARED_OPTION_CHECKS_H_
#define HOST_SHARED_OPTION_CHECKS_H_

#include <CLI/CLI.hpp>
#include <string>

namespace host {

// Finite, and no more than any stream lasts.
CLI::Validator SecondsFromZero();
CLI::Validator SecondsAboveZero();
CLI::Validator NotEmpty();

// The help of a program, without line breaks at its end.
std::string HelpText(const CLI::App& app);

// One line that says what is wrong with the command line of the program of that name.
std::string RefusalText(const CLI::ParseError& error, const std::string& program);

}  // namespace host

#endif  // HOST_SHARED_OPTION_CHECKS_H_
