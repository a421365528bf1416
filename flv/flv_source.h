// Where the bytes of an FLV stream come from.
#ifndef FLV_FLV_SOURCE_H_
#define FLV_FLV_SOURCE_H_

#include <cstdint>

class FlvSource {
 public:
  virtual ~FlvSource() = default;

  // False once nothing more is to be parsed or queued, also of what is there.
  virtual bool Runs() const = 0;

  // Waits until `count` unread bytes are there. False when they will not come.
  virtual bool Await(std::uint32_t count) = 0;

  // Waits likewise and takes them, all or none: on failure `bytes` is left as it was.
  virtual bool Read(std::uint8_t* bytes, std::uint32_t count) = 0;

  // Waits likewise and drops them, all or none.
  virtual bool Skip(std::uint32_t count) = 0;
};

#endif  // FLV_FLV_SOURCE_H_
