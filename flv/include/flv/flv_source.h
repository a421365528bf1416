// The source of the bytes of an FLV stream.
#ifndef FLV_FLV_SOURCE_H_
#define FLV_FLV_SOURCE_H_

#include <cstdint>

namespace stream {

class FlvSource {
 public:
  virtual ~FlvSource() = default;

  // Returns false once parsing and queuing must end, even if there are unread bytes.
  virtual bool Runs() const = 0;

  // Waits until `count` unread bytes are available. Returns false if they will not be received.
  virtual bool WaitForBytes(std::uint32_t count) = 0;

  // Waits for `count` bytes and reads them, all or none. On failure `bytes` is unchanged.
  virtual bool Read(std::uint8_t* bytes, std::uint32_t count) = 0;

  // Waits for `count` bytes and drops them, all or none.
  virtual bool Skip(std::uint32_t count) = 0;
};

}  // namespace stream

#endif  // FLV_FLV_SOURCE_H_
