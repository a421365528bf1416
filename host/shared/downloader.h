// The three operations of the library's facade, so that the runner can be tested without the
// library.
#ifndef HOST_SHARED_DOWNLOADER_H_
#define HOST_SHARED_DOWNLOADER_H_

#include <string>

namespace host {

class Downloader {
 public:
  virtual bool Begin(const std::string& address) = 0;
  virtual bool End() = 0;
  virtual bool SetStart(float seconds) = 0;

 protected:
  ~Downloader() = default;
};

}  // namespace host

#endif  // HOST_SHARED_DOWNLOADER_H_
