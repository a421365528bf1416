#include "msvc/players.h"

#include <gtest/gtest.h>

#include <cstddef>

#include "tests/support/recording_player.h"

using namespace stream;

class CStreamDownloader;

namespace {

// Only the addresses of the facades are used.
class MsvcPlayersTest : public testing::Test {
 protected:
  ~MsvcPlayersTest() override {
    for (std::size_t i = 0; i < kFacades; ++i) msvc::RemovePlayer(Facade(i));
  }

  const CStreamDownloader* Facade(std::size_t index) const {
    return reinterpret_cast<const CStreamDownloader*>(&facades_[index]);
  }

  static constexpr std::size_t kFacades = 3;
  const char facades_[kFacades] = {};
  RecordingPlayer player_;
  RecordingPlayer other_;
};

TEST_F(MsvcPlayersTest, OnlyThePlayerOfAFacadeIsKnown) {
  EXPECT_FALSE(msvc::IsPlayer(&player_));
  msvc::AddPlayer(Facade(0), &player_);
  EXPECT_TRUE(msvc::IsPlayer(&player_));
  EXPECT_FALSE(msvc::IsPlayer(&other_));
}

TEST_F(MsvcPlayersTest, PlayerIsForgottenWithTheLastOfItsFacades) {
  msvc::AddPlayer(Facade(0), &player_);
  msvc::AddPlayer(Facade(1), &player_);
  msvc::SharePlayer(Facade(2), &player_);
  msvc::RemovePlayer(Facade(0));
  msvc::RemovePlayer(Facade(1));
  EXPECT_TRUE(msvc::IsPlayer(&player_));
  msvc::RemovePlayer(Facade(2));
  EXPECT_FALSE(msvc::IsPlayer(&player_));
}

TEST_F(MsvcPlayersTest, FacadeThatSharesAPlayerReleasesItsFormerOne) {
  msvc::AddPlayer(Facade(0), &player_);
  msvc::AddPlayer(Facade(1), &other_);
  msvc::SharePlayer(Facade(1), &player_);
  EXPECT_TRUE(msvc::IsPlayer(&player_));
  EXPECT_FALSE(msvc::IsPlayer(&other_));
}

TEST_F(MsvcPlayersTest, SharedPlayerOfAnotherCompilerStaysUnknown) {
  msvc::AddPlayer(Facade(0), &other_);
  msvc::SharePlayer(Facade(0), &player_);
  EXPECT_FALSE(msvc::IsPlayer(&player_));
  EXPECT_FALSE(msvc::IsPlayer(&other_));
}

TEST_F(MsvcPlayersTest, PlayerIsForgottenAtOnceWhateverTheNumberOfItsFacades) {
  msvc::AddPlayer(Facade(0), &player_);
  msvc::AddPlayer(Facade(1), &player_);
  msvc::RemovePlayerAt(&player_);
  EXPECT_FALSE(msvc::IsPlayer(&player_));
}

TEST_F(MsvcPlayersTest, PlayerAtAReusedAddressOutlivesTheFacadesOfTheForgottenOne) {
  msvc::AddPlayer(Facade(0), &player_);
  msvc::RemovePlayerAt(&player_);
  msvc::AddPlayer(Facade(1), &player_);
  msvc::RemovePlayer(Facade(0));
  EXPECT_TRUE(msvc::IsPlayer(&player_));
}

TEST_F(MsvcPlayersTest, NullIsNotAPlayer) {
  msvc::AddPlayer(Facade(0), nullptr);
  EXPECT_FALSE(msvc::IsPlayer(nullptr));
}

TEST_F(MsvcPlayersTest, FacadeWithoutAPlayerReplacesOneThatWasNeverDestroyed) {
  msvc::AddPlayer(Facade(0), &player_);
  msvc::AddPlayer(Facade(0), nullptr);
  EXPECT_FALSE(msvc::IsPlayer(&player_));
}

}  // namespace
