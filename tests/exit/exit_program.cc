// exit_program OWNER WHEN ADDRESS: plays the address until the moment WHEN (exit_host.h) and
// returns from main without a stop. OWNER is "static" if exit() is to destroy the facade, otherwise
// "never".
#include <string>

#include "exit_host.h"

int main(int count, char** arguments) {
  if (count != 4) return 2;
  PlayUntil(arguments[3], std::string(arguments[1]) == "static", arguments[2]);
  return 0;
}
