// Resolves the URIs in a playlist. A pure function.
#ifndef HLS_M3U8_URI_H_
#define HLS_M3U8_URI_H_

#include <string>
#include <string_view>

// Resolves `line`, a URI in the playlist at `baseUrl`. It only concatenates text: "." and ".."
// stay, and so do errors in either address.
std::string ResolveM3u8Uri(std::string_view baseUrl, std::string_view line);

#endif  // HLS_M3U8_URI_H_
