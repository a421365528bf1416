// Arbitrary text through the playlist parser and the attribute list parser. Nothing is read out of
// bounds, and the output is not larger than the input. Numbers match those of the C library
// wherever that is defined.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "hls/playlist/m3u8_playlist.h"
#include "hls/playlist/m3u8_text.h"

namespace stream {
namespace {

// Ends the process, which libFuzzer reports as a crash.
void Require(bool condition) {
  if (!condition) std::abort();
}

void CheckEntries(const M3u8Table& entries, std::string_view base, std::string_view text) {
  std::size_t uris = 0;
  for (const auto& [key, entry] : entries) {
    Require(!entry.uri.empty() && entry.uri.size() <= base.size() + text.size());
    uris += entry.uri.size();
  }
  Require(uris <= text.size() + entries.size() * base.size());
}

// The second parse finds every entry in the table and must add nothing.
void ParseTwice(std::string_view base, std::string_view text) {
  M3u8Header header;
  std::int64_t sequence = 0;
  M3u8Table entries;
  const bool first = ParseM3u8(header, base, text, sequence, entries);
  CheckEntries(entries, base, text);
  const M3u8Header before = header;
  const std::size_t count = entries.size();
  Require(ParseM3u8(header, base, text, sequence, entries) == first);
  Require(entries.size() == count && header.isLive == before.isLive);
  Require(header.version == before.version && header.streamInfPending == before.streamInfPending);
}

bool IsTrimmed(std::string_view text) {
  std::string_view trimmed = text;
  TrimChars(trimmed, kM3u8Blanks);
  return trimmed == text;
}

void ParseAttributes(std::string_view text) {
  std::size_t bytes = 0;
  const M3u8Attributes attributes = ParseAttributeList(text, ",", "=");
  for (const auto& [key, value] : attributes) {
    Require(IsTrimmed(key) && IsTrimmed(value));
    Require(key.find_first_of(",=") == std::string::npos && value.find(',') == std::string::npos);
    bytes += key.size() + value.size();
  }
  Require(bytes <= text.size());
  std::array<WantedAttribute, 3> wanted = {{{"PROGRAM-ID"}, {"BANDWIDTH"}, {"A"}}};
  FindAttributes(text, ",", "=", wanted);
  for (const auto& [key, value] : wanted) {
    const auto listed = attributes.find(key);
    Require(value ? listed != attributes.end() && listed->second == *value
                  : listed == attributes.end());
  }
}

bool SameFloat(float a, float b) { return a == b || (std::isnan(a) && std::isnan(b)); }

// After "0x" the C library and the standard disagree about "0x.".
void CompareFloat(std::string_view text) {
  const std::string copy(text);
  if (copy.find_first_of("xX") != std::string::npos) return;
  float expected = -7;
  const bool read = std::sscanf(copy.c_str(), "%f,", &expected) == 1;
  float found = -7;
  Require(ScanFloat(text, found) == read && SameFloat(found, expected));
}

// At most 9 digits in all, so that no number is out of range, for which sscanf is undefined.
void CompareInts(std::string_view text) {
  const std::string copy(text);
  if (std::count_if(copy.begin(), copy.end(), [](char c) { return c >= '0' && c <= '9'; }) > 9)
    return;
  int expected = -7;
  long long expected_long = -7;
  const bool read = std::sscanf(copy.c_str(), "%d", &expected) == 1;
  std::sscanf(copy.c_str(), "%lld", &expected_long);
  std::int32_t found = -7;
  std::int64_t found_long = -7;
  std::string_view rest = text;
  Require(ScanInt32(rest, found) == read && found == expected);
  Require(ScanInt64(text, found_long) == read && found_long == expected_long);
  Require(ToInt32(copy) == std::atoi(copy.c_str()));
}

void CompareNumbers(std::string_view text) {
  constexpr std::size_t kLongest = 200;  // sscanf searches for the end of the text first
  ForEachPiece(text, "\n", [](std::string_view line) {
    const std::string_view number = line.substr(std::min(line.find(':') + 1, line.size()));
    if (number.size() > kLongest || number.find('\0') != std::string_view::npos) return;
    CompareFloat(number);
    CompareInts(number);
  });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  ParseTwice("http://host/a/b/list.m3u8", text);
  ParseTwice(text.substr(0, size / 2), text.substr(size / 2));
  ParseAttributes(text);
  CompareNumbers(text);
  return 0;
}

}  // namespace stream
