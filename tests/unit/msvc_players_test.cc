#include "msvc/players.h"

#include <gtest/gtest.h>

#include <cstddef>

#include "tests/support/recording_player.h"

class CStreamDownloader;

namespace {

// Only their addresses matter.
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

TEST_F(MsvcPlayersTest, PlayerOfAFacadeIsKnownAndNoOther) {
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

TEST_F(MsvcPlayersTest, FacadeThatSharesAPlayerRefersToItsFormerOneNoLonger) {
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

TEST_F(MsvcPlayersTest, PlayerIsForgottenAtOnceHoweverManyFacadesReferToIt) {
  msvc::AddPlayer(Facade(0), &player_);
  msvc::AddPlayer(Facade(1), &player_);
  msvc::ForgetPlayer(&player_);
  EXPECT_FALSE(msvc::IsPlayer(&player_));
}

TEST_F(MsvcPlayersTest, PlayerAtTheAddressOfAForgottenOneOutlivesTheFacadesOfThat) {
  msvc::AddPlayer(Facade(0), &player_);
  msvc::ForgetPlayer(&player_);
  msvc::AddPlayer(Facade(1), &player_);
  msvc::RemovePlayer(Facade(0));
  EXPECT_TRUE(msvc::IsPlayer(&player_));
}

TEST_F(MsvcPlayersTest, NullIsNoPlayer) {
  msvc::AddPlayer(Facade(0), nullptr);
  EXPECT_FALSE(msvc::IsPlayer(nullptr));
}

TEST_F(MsvcPlayersTest, FacadeWithoutAPlayerReplacesOneThatWasNeverDestroyed) {
  msvc::AddPlayer(Facade(0), &player_);
  msvc::AddPlayer(Facade(0), nullptr);
  EXPECT_FALSE(msvc::IsPlayer(&player_));
}

}  // namespace
