// exit_loader PLUGIN WHEN ADDRESS: loads the plug-in, has it play the address until the moment WHEN
// (exit_host.h), and returns from main without a stop.
#include <dlfcn.h>

int main(int count, char** arguments) {
  if (count != 4) return 2;
  void* const plugin = dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL);
  if (plugin == nullptr) return 2;
  using Play = void (*)(const char*, bool, const char*);
  const auto play = reinterpret_cast<Play>(dlsym(plugin, "PlayUntil"));
  if (play == nullptr) return 2;
  play(arguments[3], false, arguments[2]);
  return 0;
}
