// Plays an address through the C interface; prints status lines and the size of each frame.
//
//   play ADDRESS [FRAMES]
//
// Ends after FRAMES frames (100 if not given), or when the library reports that the address does
// not play. The threads are those of POSIX, which GCC for Windows has too.
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "stream_downloader_c.h"

// What the callbacks share: they are called from several threads at once.
typedef struct play {
  pthread_mutex_t mutex;
  pthread_cond_t changed;
  long frames_left;  // guarded by mutex
  int has_failed;    // guarded by mutex
} play;

static void take_frame(play* self, const char* kind, const sd_frame* frame) {
  pthread_mutex_lock(&self->mutex);
  if (self->frames_left > 0) {
    printf("%s frame of %d bytes\n", kind, (int)frame->size);
    --self->frames_left;
    pthread_cond_signal(&self->changed);
  }
  pthread_mutex_unlock(&self->mutex);
}

static void on_audio_frame(void* user, const sd_frame* frame) { take_frame(user, "audio", frame); }

static void on_video_frame(void* user, const sd_frame* frame) { take_frame(user, "video", frame); }

static void on_message(void* user, const char* line, size_t length) {
  (void)user;
  printf("%.*s\n", (int)length, line);
}

// A result line is "PLAY:", the format and, if the address does not play, " NO:".
static void on_play_result(void* user, const char* line, size_t length) {
  play* self = user;
  const char* outcome = strchr(line, ' ');
  on_message(user, line, length);
  if (outcome == NULL || strncmp(outcome, " NO:", 4) != 0) return;
  pthread_mutex_lock(&self->mutex);
  self->has_failed = 1;
  pthread_cond_signal(&self->changed);
  pthread_mutex_unlock(&self->mutex);
}

static void wait_for_end(play* self) {
  pthread_mutex_lock(&self->mutex);
  while (self->frames_left > 0 && !self->has_failed) {
    pthread_cond_wait(&self->changed, &self->mutex);
  }
  pthread_mutex_unlock(&self->mutex);
}

int main(int argc, char** argv) {
  play self = {PTHREAD_MUTEX_INITIALIZER, PTHREAD_COND_INITIALIZER, 100, 0};
  const sd_callbacks callbacks = {.size = sizeof callbacks,
                                  .user = &self,
                                  .on_audio_frame = on_audio_frame,
                                  .on_video_frame = on_video_frame,
                                  .on_message = on_message,
                                  .on_play_result = on_play_result};
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
    if (result == SD_OK) wait_for_end(&self);
    sd_destroy(downloader);
  }
  if (result != SD_OK) fprintf(stderr, "play: %s\n", sd_result_text(result));
  return result != SD_OK || self.has_failed;
}
