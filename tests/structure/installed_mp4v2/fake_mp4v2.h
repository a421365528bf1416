// A fake libmp4v2 that reads no file. A test sets what it reports about its one track.
#ifndef TESTS_STRUCTURE_INSTALLED_MP4V2_FAKE_MP4V2_H_
#define TESTS_STRUCTURE_INSTALLED_MP4V2_FAKE_MP4V2_H_

struct FakeMp4v2 {
  const char* media_data_name = nullptr;  // null: the library cannot name the track
  int parameter_set_calls = 0;
};
extern FakeMp4v2 g_fake_mp4v2;

#endif  // TESTS_STRUCTURE_INSTALLED_MP4V2_FAKE_MP4V2_H_
