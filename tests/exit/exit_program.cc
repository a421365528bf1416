// exit_program OWNER WHEN ADDRESS: plays the address until that moment and returns from main
// without a stop. OWNER is "static" where exit() destroys the facade, else "never"; or "late":
// never, and exit() lasts a while after the library's exit handler has run.
#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>

#include "exit_host.h"

namespace {

// What must not happen any more is given a chance to happen.
void ExitLate() { std::this_thread::sleep_for(std::chrono::milliseconds(100)); }

}  // namespace

int main(int count, char** arguments) {
  if (count != 4) return 2;
  const std::string owner = arguments[1];
  if (owner == "late") std::atexit(ExitLate);
  PlayUntil(arguments[3], owner == "static", arguments[2]);
  return 0;
}
