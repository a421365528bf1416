// exit_program OWNER WHEN ADDRESS: plays the address until that moment and returns from main
// without a stop. OWNER is "static" where exit() destroys the facade, else "never".
#include <string>

#include "exit_host.h"

int main(int count, char** arguments) {
  if (count != 4) return 2;
  PlayUntil(arguments[3], std::string(arguments[1]) == "static", arguments[2]);
  return 0;
}
