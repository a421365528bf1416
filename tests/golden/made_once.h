// Samples that ffmpeg makes, each once for all presets, programs and cases.
#ifndef TESTS_GOLDEN_MADE_ONCE_H_
#define TESTS_GOLDEN_MADE_ONCE_H_

#include <filesystem>
#include <functional>
#include <string>

// The file `name` that was made from `recipe`: whoever asks for it first has `make` write it. It is
// shared and must not be changed. Another recipe, or another version of ffmpeg, makes another file.
// Throws what `make` throws; the next one to ask then tries again.
//
// Programs may ask for the same file at the same time: it takes its place once it is whole.
std::filesystem::path MadeOnce(const std::string& name, const std::string& recipe,
                               const std::function<void(const std::filesystem::path&)>& make);

#endif  // TESTS_GOLDEN_MADE_ONCE_H_
