// SPDX-License-Identifier: MIT
// The window stopped and continued, and sent every signal that by itself does nothing, all through
// an update.
#include <csignal>

#include "tests/app/program_at_point.h"

namespace hollin {
namespace {

class SignalStormTest : public ProgramAtPointTest,
                        public ::testing::WithParamInterface<PointUpdate> {
 protected:
  void Storm() const {
    for (const int number : {SIGCHLD, SIGURG, SIGWINCH, SIGPIPE, SIGSTOP, SIGCONT}) {
      window->Signal(number);
    }
  }
};

TEST_P(SignalStormTest, DoesNotFailAnUpdate) {
  PlugInKeyboard(GetParam());
  ASSERT_NO_FATAL_FAILURE(UpdateUntilReport(PackageOf(GetParam()), 1));
  EXPECT_TRUE(EventuallyAtLast([this] {
    Storm();
    return CountInRecord("close") > 0;
  }));
  EXPECT_TRUE(IsShown("Information"));
  ExpectFlashHoldsImage(GetParam());
  ExpectGone([this] { window->Signal(SIGTERM); });
}

INSTANTIATE_TEST_SUITE_P(Updates, SignalStormTest, ::testing::ValuesIn(kPointUpdates),
                         [](const auto& test) { return std::string(test.param.dataType); });

}  // namespace
}  // namespace hollin
