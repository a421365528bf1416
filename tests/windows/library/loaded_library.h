// The library for a program that is not linked with it: loaded by its file name, with members found
// by their names.
#ifndef TESTS_WINDOWS_LIBRARY_LOADED_LIBRARY_H_
#define TESTS_WINDOWS_LIBRARY_LOADED_LIBRARY_H_

#include <string>

#include "public/stream_player.h"

class LoadedLibrary {
 public:
  // Loads the library, which must succeed. The destructor frees it.
  LoadedLibrary();
  ~LoadedLibrary();
  LoadedLibrary(const LoadedLibrary&) = delete;
  LoadedLibrary& operator=(const LoadedLibrary&) = delete;

  // Members of the CStreamDownloader at the address `facade`.
  void (*construct)(void* facade, CStreamPlayerImp* player);
  void (*destroy)(void* facade);
  bool (*begin_download)(void* facade, std::string url);
  bool (*end_download)(void* facade);

 private:
  template <typename Function>
  void Find(Function*& function, const char* name);

  void* module_;
};

#endif  // TESTS_WINDOWS_LIBRARY_LOADED_LIBRARY_H_
