// Samples that ffmpeg makes. Each is made once for all presets, programs and cases.
#ifndef TESTS_GOLDEN_MADE_ONCE_H_
#define TESTS_GOLDEN_MADE_ONCE_H_

#include <filesystem>
#include <functional>
#include <string>

// Returns the file `name` that is made from `recipe`. The first call has `make` write it. The file
// is shared and must not be changed. A different recipe, or a different version of ffmpeg, makes a
// different file. Throws what `make` throws; the next call then tries again.
//
// Programs may request the same file at the same time: it appears at its path when it is complete.
std::filesystem::path MadeOnce(const std::string& name, const std::string& recipe,
                               const std::function<void(const std::filesystem::path&)>& make);

#endif  // TESTS_GOLDEN_MADE_ONCE_H_
