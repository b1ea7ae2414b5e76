// SPDX-License-Identifier: MIT
#include "base/pause.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <vector>

#include "tests/base/system_calls.h"
#include "tests/support/recorded_pause.h"

namespace hollin {
namespace {

using namespace std::chrono_literals;
using ::testing::DoubleNear;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PauseTest : public ::testing::Test {
 protected:
  PauseTest() {
    Calls().onSleep = [this](double seconds) {
      sleeps.push_back(seconds);
      return sleeps.size() == 1 ? leftOfTheFirst : 0;
    };
  }
  ~PauseTest() override { Calls().onSleep = {}; }

  std::vector<double> sleeps;
  double leftOfTheFirst = 0;
};

TEST_F(PauseTest, APauseIsOneSleepOfTheWholeLength) {
  Pause(2500ms);
  EXPECT_THAT(sleeps, ElementsAre(DoubleNear(2.5, 1e-6)));
}

TEST_F(PauseTest, ASignalDoesNotCutIt) {
  leftOfTheFirst = 0.25;
  Pause(500ms);
  EXPECT_THAT(sleeps, ElementsAre(DoubleNear(0.5, 1e-6), DoubleNear(0.25, 1e-6)));
}

TEST_F(PauseTest, AReplacementTakesTheLengthAndNothingSleeps) {
  const RecordedPause pauses;
  Pause(30ms);
  Pause(500ms);
  EXPECT_THAT(pauses.lengths, ElementsAre(30ms, 500ms));
  EXPECT_THAT(sleeps, IsEmpty());
}

TEST_F(PauseTest, AnEmptyFunctionBringsTheRealWaitBack) {
  { const RecordedPause pauses; }
  Pause(30ms);
  EXPECT_THAT(sleeps, ElementsAre(DoubleNear(0.03, 1e-6)));
}

}  // namespace
}  // namespace hollin
