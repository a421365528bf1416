// A facade, a recording player and a server, for tests that play transport streams.
#ifndef TESTS_SUPPORT_TS_PLAY_H_
#define TESTS_SUPPORT_TS_PLAY_H_

#include "tests/support/play.h"
#include "tests/support/test_server.h"
#include "tests/support/ts_packets.h"

using TsPlay = Play<TestServer>;

#endif  // TESTS_SUPPORT_TS_PLAY_H_
