// Which directory the cache files are in: "tmp" beside the host's executable or, where that one can
// be neither made nor written, a directory in the user's cache.
//
// The choice is process-wide and is made again for each new cache file, since a directory may
// become writable later. A file that was made before keeps its path. Any thread may call these
// functions.
#ifndef COMMON_TEMP_FOLDER_H_
#define COMMON_TEMP_FOLDER_H_

#include <string>

struct TempFolder {
  std::string narrow;  // in the system code page, with a separator at its end: names are appended
  std::wstring wide;   // with no separator at its end: the form that makes it
};

// The directory for an executable of the given name. One with no separator at all is kept whole.
// The forward slash is kept for compatibility, whatever the platform's separator is.
std::string TempDirBeside(const std::string& module_name);
std::wstring TempDirBeside(const std::wstring& module_name);

// The directory for an executable in a user's cache, whose path has a separator at its end. Each
// executable has one of its own there, named by a hash of its wide name: the narrow one may have
// lost letters.
std::string TempDirInCache(const std::string& cache, const std::wstring& module_name);
std::wstring TempDirInCache(const std::wstring& cache, const std::wstring& module_name);

// The directory that was chosen last; the one beside the executable before the first choice, and
// where no other one can be written either.
TempFolder TempFolderInUse();

// False when the last choice found no directory that can be written.
bool TempFolderIsWritable();

// Makes the directory beside the executable, if need be, and chooses it.
void ReturnToTempFolderBeside();

// For a file that could not be opened. Where the directory beside the executable can be neither
// made nor written, chooses the one in the user's cache and reports it in a console line. Returns
// whether it did. Makes no directory beside the executable that was not there before.
bool LeaveUnwritableTempFolder();

// Forgets the choice, as if there had been none. For tests.
void ForgetTempFolder();

#endif  // COMMON_TEMP_FOLDER_H_
