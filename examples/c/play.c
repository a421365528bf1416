// Plays an address through the C interface; prints status lines and the size of each frame.
//
//   play ADDRESS [FRAMES]
//
// Ends after FRAMES frames (default 100), or 10 seconds after the last callback. Uses POSIX
// threads, which GCC for Windows supports too.
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include "stream_downloader_c.h"

// State shared by the callbacks, which several threads call at once.
typedef struct play {
  pthread_mutex_t mutex;
  pthread_cond_t changed;
  long frames_left;      // guarded by mutex
  time_t last_callback;  // guarded by mutex
} play;

enum { SILENCE_SECONDS = 10 };

static void print_frame(play* self, const char* kind, const sd_frame* frame) {
  pthread_mutex_lock(&self->mutex);
  self->last_callback = time(NULL);
  if (self->frames_left > 0) {
    printf("%s frame of %d bytes\n", kind, (int)frame->size);
    --self->frames_left;
    pthread_cond_signal(&self->changed);
  }
  pthread_mutex_unlock(&self->mutex);
}

static void on_audio_frame(void* user, const sd_frame* frame) { print_frame(user, "audio", frame); }

static void on_video_frame(void* user, const sd_frame* frame) { print_frame(user, "video", frame); }

static void on_line(void* user, const char* line, size_t length) {
  play* self = user;
  printf("%.*s\n", (int)length, line);
  pthread_mutex_lock(&self->mutex);
  self->last_callback = time(NULL);
  pthread_mutex_unlock(&self->mutex);
}

// Returns whether all frames were printed. Not every format reports that a stream has ended or does
// not play, so silence ends the wait.
static int wait_for_frames(play* self) {
  int is_done;
  pthread_mutex_lock(&self->mutex);
  self->last_callback = time(NULL);
  while (self->frames_left > 0 && time(NULL) <= self->last_callback + SILENCE_SECONDS) {
    const struct timespec end = {self->last_callback + SILENCE_SECONDS + 1, 0};
    pthread_cond_timedwait(&self->changed, &self->mutex, &end);
  }
  is_done = self->frames_left <= 0;
  pthread_mutex_unlock(&self->mutex);
  return is_done;
}

int main(int argc, char** argv) {
  play self = {PTHREAD_MUTEX_INITIALIZER, PTHREAD_COND_INITIALIZER, 100, 0};
  int is_done = 0;
  const sd_callbacks callbacks = {.size = sizeof callbacks,
                                  .user = &self,
                                  .on_audio_frame = on_audio_frame,
                                  .on_video_frame = on_video_frame,
                                  .on_message = on_line,
                                  .on_play_result = on_line};
  sd_downloader* downloader;
  sd_result result;

  if (argc < 2) {
    fprintf(stderr, "usage: play ADDRESS [FRAMES]\n");
    return 2;
  }
  if (argc > 2) self.frames_left = atol(argv[2]);

  result = sd_create(&callbacks, &downloader);
  if (result == SD_OK) {
    result = sd_begin_download(downloader, argv[1], strlen(argv[1]));
    if (result == SD_OK) is_done = wait_for_frames(&self);
    sd_destroy(downloader);
  }
  if (result != SD_OK) fprintf(stderr, "play: %s\n", sd_result_text(result));
  return !is_done;
}
