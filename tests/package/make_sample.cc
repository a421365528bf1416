// Writes a short transport stream into the named file.
#include <fstream>

#include "tests/support/ts_packets.h"

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const stream::ts_test::Bytes stream = stream::ts_test::MakeStream(60);
  std::ofstream file(argv[1], std::ios::binary);
  file.write(reinterpret_cast<const char*>(stream.data()),
             static_cast<std::streamsize>(stream.size()));
  return file.good() ? 0 : 1;
}
