#include "stream_downloader_c.h"

const char* sd_result_text(int result) {
  switch (result) {
    case SD_OK:
      return "success";
    case SD_NOT_PLAYING:
      return "nothing was playing";
    case SD_NOTHING_STARTED:
      return "nothing was started yet, so the position is lost";
    case SD_ERROR_EMPTY_ADDRESS:
      return "the address is empty";
    case SD_ERROR_UNKNOWN_SCHEME:
      return "the address is neither http, https nor file://";
    case SD_ERROR_NULL_DOWNLOADER:
      return "the downloader is null";
    case SD_ERROR_NULL_ADDRESS:
      return "the address is null";
    case SD_ERROR_NULL_CALLBACKS:
      return "the struct of callbacks is null";
    case SD_ERROR_NULL_OUT:
      return "the pointer for the downloader is null";
    case SD_ERROR_CALLBACKS_SIZE:
      return "the struct of callbacks has a size that the library does not know";
    case SD_ERROR_IN_CALLBACK:
      return "called from inside a callback";
    case SD_ERROR_OUT_OF_MEMORY:
      return "out of memory";
    case SD_ERROR_OTHER:
      return "failed for another reason";
    default:
      return "unknown result";
  }
}
