// A host of the C interface: plays the address in its last argument until a frame is delivered. The
// exit code says which check failed; 0 means none.
#include "stream_downloader_c.h"

__declspec(dllimport) char* GetCommandLineA(void);
__declspec(dllimport) void Sleep(unsigned long milliseconds);
__declspec(dllimport) void ExitProcess(unsigned int code);

int _fltused;  // the linker requires it if floats are used

static int user;
static volatile int first_frame_size;
static volatile size_t last_line_length;

static void on_video_frame(void* given, const sd_frame* frame) {
  if (given == &user && frame->data[0] == 0) first_frame_size = frame->size;
}

static void on_message(void* given, const char* line, size_t length) {
  if (given == &user && line[length] == '\0') last_line_length = length;
}

static const char* last_word(const char* text, size_t* length) {
  const char* word = text;
  const char* end = text;
  for (; *end != '\0'; ++end) {
    if (*end == ' ') word = end + 1;
  }
  *length = (size_t)(end - word);
  return word;
}

static unsigned int check(sd_downloader* downloader) {
  size_t length;
  const char* address = last_word(GetCommandLineA(), &length);

  if (sd_begin_download(downloader, "rtmp", 4) != SD_ERROR_UNKNOWN_SCHEME) return 3;
  if (last_line_length != sizeof "PLAY UNKOWN:rtmp" - 1) return 4;
  if (sd_set_start_position(downloader, 1.5F) != SD_NOTHING_STARTED) return 5;
  if (sd_begin_download(downloader, address, length) != SD_OK) return 6;
  while (first_frame_size == 0) Sleep(1);
  if (first_frame_size != 300) return 7;
  if (sd_end_download(downloader) != SD_OK) return 8;
  return sd_destroy(downloader) == SD_OK ? 0 : 9;
}

void mainCRTStartup(void) {
  static sd_callbacks callbacks;
  sd_downloader* downloader;

  callbacks.size = sizeof callbacks;
  callbacks.user = &user;
  callbacks.on_video_frame = on_video_frame;
  callbacks.on_message = on_message;
  if (sd_version_number() != SD_VERSION_NUMBER) ExitProcess(1);
  if (sd_create(&callbacks, &downloader) != SD_OK) ExitProcess(2);
  ExitProcess(check(downloader));
}
