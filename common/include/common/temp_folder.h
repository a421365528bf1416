// Chooses the directory of the cache files: "tmp" beside the host's executable or, if that can be
// neither created nor written, a directory in the user's cache.
//
// The choice is process-wide and is made again for each new cache file, since a directory may
// become writable later. A file that was created before keeps its path. Any thread may call these
// functions.
#ifndef COMMON_TEMP_FOLDER_H_
#define COMMON_TEMP_FOLDER_H_

#include <string>

namespace stream {

struct TempFolder {
  // In the system code page, with a separator at its end: file names are appended.
  std::string narrow;
  // Without a separator at its end: the form for creating it.
  std::wstring wide;
};

// Returns the directory beside the executable of the given name. A name without a separator is kept
// whole. Kept for compatibility: the separator at the end is a forward slash on every platform.
std::string TempDirBeside(const std::string& module_name);
std::wstring TempDirBeside(const std::wstring& module_name);

// Returns an executable's directory in a user's cache, whose path has a separator at its end. Each
// executable has its own directory, named by a hash of its wide name: the narrow name may have lost
// characters.
std::string TempDirInCache(const std::string& cache, const std::wstring& module_name);
std::wstring TempDirInCache(const std::wstring& cache, const std::wstring& module_name);

// Returns the directory chosen last. Before the first choice, and if no directory is writable, this
// is the one beside the executable.
TempFolder TempFolderInUse();

// Returns false if the last choice found no writable directory.
bool TempFolderIsWritable();

// Creates the directory beside the executable if needed, and chooses it.
void UseFolderBesideExecutable();

// Call it if a file could not be opened. If the directory beside the executable can be neither
// created nor written, chooses the directory in the user's cache and logs that, or logs that
// neither is writable. Returns whether it chose another directory. Does not create the directory
// beside the executable.
bool FallBackToCacheFolder();

// Clears the choice. For tests.
void ResetTempFolder();

}  // namespace stream

#endif  // COMMON_TEMP_FOLDER_H_
