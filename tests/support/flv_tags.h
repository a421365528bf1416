// Builds FLV streams (Adobe Flash Video File Format, annex E). They are well-formed unless a test
// damages them.
#ifndef TESTS_SUPPORT_FLV_TAGS_H_
#define TESTS_SUPPORT_FLV_TAGS_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace flv_test {

using Bytes = std::vector<std::uint8_t>;

inline constexpr std::uint8_t kAudio = 8;
inline constexpr std::uint8_t kVideo = 9;
inline constexpr std::uint8_t kScript = 18;

inline constexpr std::size_t kHeaderSize = 9;
inline constexpr std::size_t kTagHeaderSize = 11;
inline constexpr std::size_t kBackPointerSize = 4;  // the PreviousTagSize field

// AudioSpecificConfig: AAC LC, 48 kHz, two channels.
inline constexpr std::uint16_t kStereo48 = 0x1190;

inline void Append(Bytes& bytes, const Bytes& more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}

// The concatenation of all parts.
inline Bytes Join(const std::vector<Bytes>& parts) {
  Bytes all;
  for (const Bytes& part : parts) Append(all, part);
  return all;
}

// The low `count` bytes of a number, most significant first.
inline Bytes BigEndian(std::uint64_t value, int count) {
  Bytes bytes;
  for (int shift = 8 * (count - 1); shift >= 0; shift -= 8) {
    bytes.push_back(static_cast<std::uint8_t>(value >> shift));
  }
  return bytes;
}

// The file header. `extra` is inserted between its nine bytes and the first tag.
inline Bytes Header(const Bytes& extra = {}, const std::string& signature = "FLV") {
  return Join({Bytes(signature.begin(), signature.end()),
               {1, 5},
               BigEndian(kHeaderSize + extra.size(), 4),
               extra});
}

// PreviousTagSize, then a tag whose header declares a body of `size` bytes.
inline Bytes TagOfSize(std::size_t size, std::uint8_t type, std::uint32_t timestamp,
                       const Bytes& body) {
  return Join({BigEndian(0x70717273, 4),  // PreviousTagSize, which the parser ignores
               {type},
               BigEndian(size, 3),
               BigEndian(timestamp, 3),
               BigEndian(timestamp >> 24, 1),
               {0, 0, 0},
               body});
}

inline Bytes Tag(std::uint8_t type, std::uint32_t timestamp, const Bytes& body) {
  return TagOfSize(body.size(), type, timestamp, body);
}

// The body of a video tag: key frame, AVC, packet type, composition time, rest.
inline Bytes AvcBody(std::uint8_t packet_type, const Bytes& rest) {
  return Join({{0x17, packet_type, 0, 0, 80}, rest});
}

// A NAL unit after its 4-byte length.
inline Bytes WithLength(const Bytes& nal) { return Join({BigEndian(nal.size(), 4), nal}); }

inline Bytes NalTag(std::uint32_t timestamp, const std::vector<Bytes>& nals) {
  Bytes units;
  for (const Bytes& nal : nals) Append(units, WithLength(nal));
  return Tag(kVideo, timestamp, AvcBody(1, units));
}

inline Bytes ParameterSetWithLength(const Bytes& set) {
  return Join({BigEndian(set.size(), 2), set});
}

// An AVCDecoderConfigurationRecord.
inline Bytes AvcRecord(const std::vector<Bytes>& sps, const std::vector<Bytes>& pps) {
  Bytes record = {1, 0x64, 0, 0x1F, 0xFF, static_cast<std::uint8_t>(0xE0 | sps.size())};
  for (const Bytes& set : sps) Append(record, ParameterSetWithLength(set));
  record.push_back(static_cast<std::uint8_t>(pps.size()));
  for (const Bytes& set : pps) Append(record, ParameterSetWithLength(set));
  return record;
}

inline Bytes AvcHeaderTag(std::uint32_t timestamp, const std::vector<Bytes>& sps,
                          const std::vector<Bytes>& pps) {
  return Tag(kVideo, timestamp, AvcBody(0, AvcRecord(sps, pps)));
}

inline Bytes EndOfSequenceTag(std::uint32_t timestamp) {
  return Tag(kVideo, timestamp, AvcBody(2, {}));
}

inline Bytes AacHeaderTag(std::uint16_t config, std::uint32_t timestamp = 0) {
  return Tag(kAudio, timestamp, Join({{0xAF, 0}, BigEndian(config, 2)}));
}

inline Bytes AacTag(std::uint32_t timestamp, const Bytes& frame) {
  return Tag(kAudio, timestamp, Join({{0xAF, 1}, frame}));
}

inline Bytes ScriptTag(const Bytes& body) { return Tag(kScript, 0, body); }

// The end of a file: the size of its last tag.
inline Bytes LastBackPointer() { return BigEndian(11, 4); }

// A NAL unit as the parser delivers it.
inline Bytes WithStartCode(const Bytes& nal) { return Join({{0, 0, 0, 1}, nal}); }

// The parts of MakeStream's result, for tests that repeat or cut them.
inline Bytes StreamStart() {
  return Join({Header(), ScriptTag({2, 0, 4, 'm', 'e', 't', 'a'}),
               AvcHeaderTag(0, {{0x67, 1, 2, 3}}, {{0x68, 4, 5}}), AacHeaderTag(kStereo48)});
}

// A video frame of one NAL unit and an AAC frame, both 40 ms after the previous number. Their bytes
// are derived from the number, so that no two frames are equal.
inline Bytes StreamFrame(int number, std::size_t nal_size) {
  Bytes nal(nal_size, static_cast<std::uint8_t>(number));
  nal[0] = 0x41;
  nal[1] = static_cast<std::uint8_t>(number >> 8);
  const Bytes aac(60, static_cast<std::uint8_t>(number));
  const auto timestamp = static_cast<std::uint32_t>(40 * number);
  return Join({NalTag(timestamp, {nal}), AacTag(timestamp, aac)});
}

// A whole file: script data, both sequence headers, and `frames` video frames, each followed by an
// AAC frame. The parser delivers `frames` + 2 video frames (the parameter sets are the first two)
// and `frames` audio frames.
inline Bytes MakeStream(int frames, std::size_t nal_size = 300) {
  Bytes stream = StreamStart();
  for (int i = 0; i < frames; ++i) Append(stream, StreamFrame(i, nal_size));
  Append(stream, LastBackPointer());
  return stream;
}

// A file of exactly `size` bytes; its last frame is as long as needed. `size` must be at least 1 KB
// more than StreamStart.
inline Bytes MakeStreamOfSize(std::size_t size, std::size_t nal_size = 300) {
  Bytes stream = StreamStart();
  Bytes frame = StreamFrame(0, nal_size);
  constexpr std::size_t kFill = 100;  // space for the last tag
  for (int i = 1; stream.size() + frame.size() + kFill <= size; ++i) {
    Append(stream, frame);
    frame = StreamFrame(i, nal_size);
  }
  const std::size_t overhead = 2 * kBackPointerSize + kTagHeaderSize + 5 + 4;
  Append(stream, NalTag(0xFFFFFF, {Bytes(size - stream.size() - overhead, 0x65)}));
  Append(stream, LastBackPointer());
  return stream;
}

}  // namespace flv_test

#endif  // TESTS_SUPPORT_FLV_TAGS_H_
