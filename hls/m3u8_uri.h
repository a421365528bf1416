// Where the lines of a playlist point to. A pure function.
#ifndef HLS_M3U8_URI_H_
#define HLS_M3U8_URI_H_

#include <string>
#include <string_view>

// The address that `line` stands for in a playlist of the address `baseUrl`. Text is put together
// and nothing more: "." and ".." stay, and so does whatever is wrong with either address.
std::string ResolveM3u8Uri(std::string_view baseUrl, std::string_view line);

#endif  // HLS_M3U8_URI_H_
