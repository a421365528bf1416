// The temporary directory of programs in folders with names of all kinds. Each case copies the
// probe to its own folder, starts it there, and compares its output with what Windows reports.
#include <gtest/gtest.h>
#include <windows.h>

#include <array>
#include <cstddef>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/environment.h"

namespace {

namespace fs = std::filesystem;

// Converts wide text to a code page with Windows. The second value is whether nothing was lost.
std::pair<std::string, bool> Narrow(const std::wstring& wide, UINT code_page) {
  BOOL lost = FALSE;
  BOOL* const used_default = code_page == CP_UTF8 ? nullptr : &lost;
  const int size = static_cast<int>(wide.size());
  const int length =
      WideCharToMultiByte(code_page, 0, wide.data(), size, nullptr, 0, nullptr, nullptr);
  std::string text(static_cast<std::size_t>(length), '\0');
  WideCharToMultiByte(code_page, 0, wide.data(), size, text.data(), length, nullptr, used_default);
  return {text, lost == FALSE};
}

unsigned Digit(char c) { return static_cast<unsigned>(c <= '9' ? c - '0' : c - 'a' + 10); }

template <typename Text>
Text FromHex(const std::string& hex) {
  Text text;
  constexpr std::size_t kDigits = 2 * sizeof(typename Text::value_type);
  for (std::size_t at = 0; at + kDigits <= hex.size(); at += kDigits) {
    unsigned value = 0;
    for (std::size_t i = 0; i < kDigits; ++i) value = value * 16 + Digit(hex[at + i]);
    text += static_cast<typename Text::value_type>(value);
  }
  return text;
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines(1);
  for (const char c : text) {
    if (c == '\n') {
      lines.emplace_back();
    } else if (c != '\r') {
      lines.back() += c;
    }
  }
  return lines;
}

std::string ReadToTheEnd(HANDLE pipe) {
  std::string text;
  std::array<char, 512> buffer;
  DWORD length = 0;
  while (ReadFile(pipe, buffer.data(), static_cast<DWORD>(buffer.size()), &length, nullptr) != 0 &&
         length > 0) {
    text.append(buffer.data(), length);
  }
  return text;
}

// Runs a program and returns its output; empty if it does not start or fails.
std::string OutputOf(const fs::path& program) {
  SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  HANDLE reader = nullptr;
  HANDLE writer = nullptr;
  if (CreatePipe(&reader, &writer, &inherited, 0) == 0) return {};
  SetHandleInformation(reader, HANDLE_FLAG_INHERIT, 0);
  STARTUPINFOW startup{};
  startup.cb = sizeof(startup);
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdOutput = writer;
  startup.hStdError = writer;
  PROCESS_INFORMATION process{};
  const BOOL started = CreateProcessW(program.c_str(), nullptr, nullptr, nullptr, TRUE, 0, nullptr,
                                      nullptr, &startup, &process);
  CloseHandle(writer);
  std::string output = started != 0 ? ReadToTheEnd(reader) : std::string();
  CloseHandle(reader);
  if (started == 0) return {};
  DWORD exit_code = 1;
  WaitForSingleObject(process.hProcess, INFINITE);
  GetExitCodeProcess(process.hProcess, &exit_code);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return exit_code == 0 ? output : std::string();
}

class WindowsTempFolderTest : public testing::Test {
 protected:
  void RunIn(const std::wstring& folder) {
    folder_ = fs::current_path() / folder;
    fs::remove_all(folder_);
    fs::create_directory(folder_);
    fs::copy_file("path_probe.exe", folder_ / "path_probe.exe");
    SetUserCache(user_cache_.string());
    const std::vector<std::string> lines = Lines(OutputOf(folder_ / "path_probe.exe"));
    ASSERT_GE(lines.size(), 5U) << "the probe did not run";
    narrow_ = FromHex<std::string>(lines[0]);
    utf8_ = FromHex<std::string>(lines[1]);
    wide_ = FromHex<std::wstring>(lines[2]);
    console_.assign(lines.begin() + 3, lines.end() - 2);
    cache_file_ = FromHex<std::string>(lines[lines.size() - 2]);
  }

  void ExpectWideFormIsExact() {
    EXPECT_EQ(wide_, folder_.wstring() + L"\\tmp");
    EXPECT_TRUE(fs::is_directory(folder_ / "tmp"));
  }

  void ExpectNarrowFormOpens() {
    EXPECT_EQ(narrow_, Narrow(folder_.wstring(), CP_ACP).first + "\\tmp/");
    EXPECT_EQ(utf8_, Narrow(folder_.wstring(), CP_UTF8).first + "\\tmp/");
    EXPECT_EQ(cache_file_, narrow_ + "mebo.ts");
    EXPECT_TRUE(fs::is_regular_file(folder_ / "tmp" / "mebo.ts"));
    EXPECT_TRUE(console_.empty()) << console_.front();
  }

  fs::path folder_;
  std::string narrow_;
  std::string utf8_;
  std::wstring wide_;
  std::vector<std::string> console_;  // lines after those of the directories
  std::string cache_file_;
  const fs::path user_cache_ = fs::current_path() / "user_cache";
};

TEST_F(WindowsTempFolderTest, PlainFolder) {
  RunIn(L"plain");
  ExpectWideFormIsExact();
  ExpectNarrowFormOpens();
}

TEST_F(WindowsTempFolderTest, FolderWithASpace) {
  RunIn(L"with a blank");
  ExpectWideFormIsExact();
  ExpectNarrowFormOpens();
}

TEST_F(WindowsTempFolderTest, FolderWithLettersOfTheCodePage) {
  const std::wstring folder = L"caf\u00e9";
  if (!Narrow(folder, CP_ACP).second) GTEST_SKIP() << "the code page has no such letter";
  RunIn(folder);
  ExpectWideFormIsExact();
  ExpectNarrowFormOpens();
}

// The code page cannot represent such a path: the directory is created, but no file in it can be
// opened, so the user's cache is used instead.
TEST_F(WindowsTempFolderTest, FolderWithLettersOutsideTheCodePage) {
  const std::wstring folder = L"\u65e5\u672c \u0434";
  if (Narrow(folder, CP_ACP).second) GTEST_SKIP() << "the code page has all letters";
  fs::remove_all(user_cache_);
  RunIn(folder);
  ExpectWideFormIsExact();
  EXPECT_EQ(narrow_, Narrow(folder_.wstring(), CP_ACP).first + "\\tmp/");
  EXPECT_TRUE(fs::is_empty(folder_ / "tmp"));
  const std::string in_cache = (user_cache_ / "stream_downloader" / "tmp" / "").string();
  EXPECT_EQ(cache_file_.substr(0, in_cache.size()), in_cache);
  EXPECT_TRUE(fs::is_regular_file(cache_file_));
  ASSERT_EQ(console_.size(), 1U);
  EXPECT_EQ(console_.front(), "Cache files are in " +
                                  cache_file_.substr(0, cache_file_.size() - 7) + ": " + narrow_ +
                                  " cannot be written.");
}

// The two folders differ only in the wide form. Their narrow forms are the same.
TEST_F(WindowsTempFolderTest, TwoFoldersWithLettersOutsideTheCodePageShareNoCacheFile) {
  const std::wstring one = L"\u65e5";
  const std::wstring other = L"\u672c";
  if (Narrow(one + other, CP_ACP).second) GTEST_SKIP() << "the code page has both letters";
  RunIn(one);
  const std::string first = cache_file_;
  RunIn(other);
  EXPECT_NE(cache_file_, first);
}

}  // namespace
