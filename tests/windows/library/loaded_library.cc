#include "tests/windows/library/loaded_library.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <stdexcept>

LoadedLibrary::LoadedLibrary() : module_(LoadLibraryW(L"stream_downloader.dll")) {
  if (module_ == nullptr) throw std::runtime_error("the library cannot be loaded");
  Find(construct, "_ZN17CStreamDownloaderC1EP16CStreamPlayerImp");
  Find(destroy, "_ZN17CStreamDownloaderD1Ev");
  Find(
      begin_download,
      "_ZN17CStreamDownloader13BeginDownloadENSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE");
  Find(end_download, "_ZN17CStreamDownloader11EndDownloadEv");
}

LoadedLibrary::~LoadedLibrary() { EXPECT_NE(FreeLibrary(static_cast<HMODULE>(module_)), 0); }

template <typename Function>
void LoadedLibrary::Find(Function*& function, const char* name) {
  const FARPROC found = GetProcAddress(static_cast<HMODULE>(module_), name);
  if (found == nullptr) throw std::runtime_error(std::string("the library lacks ") + name);
  function = reinterpret_cast<Function*>(reinterpret_cast<void*>(found));
}
