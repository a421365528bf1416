// The library as a program meets it that was not linked with it: loaded by its file's name, its
// members found by theirs.
#ifndef TESTS_WINDOWS_LIBRARY_LOADED_LIBRARY_H_
#define TESTS_WINDOWS_LIBRARY_LOADED_LIBRARY_H_

#include <string>

#include "public/stream_player.h"

class LoadedLibrary {
 public:
  // Loads it, which must succeed; the destructor frees it.
  LoadedLibrary();
  ~LoadedLibrary();
  LoadedLibrary(const LoadedLibrary&) = delete;
  LoadedLibrary& operator=(const LoadedLibrary&) = delete;

  // The members of a CStreamDownloader at this place.
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
