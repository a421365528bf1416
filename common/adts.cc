#include "common/adts.h"

#include "common/bit_writer.h"

namespace stream {

AdtsFields FieldsOfAudioSpecificConfig(std::uint16_t config) {
  return {static_cast<std::uint16_t>(config >> 7 & 15U),
          static_cast<std::uint16_t>(config >> 3 & 15U)};
}

AdtsHeader MakeAdtsHeader(const AdtsFields& fields, std::uint32_t payload_size) {
  constexpr std::uint16_t kSyncword = 0xFFF;
  constexpr std::uint16_t kAacLc = 1;
  constexpr std::uint16_t kVariableBitrate = 0x7FF;
  AdtsHeader header{};
  BitWriter writer(header);
  writer.Write(12, kSyncword);
  writer.Write(1, 0);  // ID
  writer.Write(2, 0);  // layer
  writer.Write(1, 1);  // protection_absent
  writer.Write(2, kAacLc);
  writer.Write(4, fields.sampling_frequency_index);
  writer.Write(1, 0);  // private_bit
  writer.Write(3, fields.channel_configuration);
  writer.Write(4, 0);  // original_copy, home, and two bits on copyright
  writer.Write(13, static_cast<std::uint16_t>(payload_size + kAdtsHeaderSize));
  writer.Write(11, kVariableBitrate);
  writer.Write(2, 0);  // number_of_raw_data_blocks_in_frame
  return header;
}

}  // namespace stream
