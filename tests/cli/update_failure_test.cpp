// SPDX-License-Identifier: MIT
// Updates in which a step fails: what is said about it, and how the program ends.
#include "tests/cli/whole_program_test.h"

namespace hollin {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

class UpdateFailureTest : public WholeProgramTest {
 protected:
  // An update of two blocks on a keyboard with one fault.
  Ended RunWith(const std::string& fault) {
    const SimulatorProcess keyboard(bus, {"--fault", fault});
    return Run({"update", MakePackage({Counting(5000)})});
  }
};

TEST_F(UpdateFailureTest, ARefusedModeIsNamedAfterFiveAttempts) {
  const Ended ended = RunWith("wrong-status=0xE0@c1x5");
  EXPECT_EQ(ended.exitCode, 1);
  EXPECT_EQ(ended.err,
            "Update Error!\n"
            "Step 1 of 4 failed: enter update mode\n"
            "  Reason: the keyboard did not reply what it should\n"
            "  Command: enter update mode\n"
            "  Sent: 01 0A 4D 02\n"
            "  Expected: F1\n"
            "  Received: E0\n");
}

TEST_F(UpdateFailureTest, AModeThatARetryReachesIsNoFailure) {
  EXPECT_EQ(RunWith("wrong-status=0xE0@c1x4").exitCode, 0);
}

TEST_F(UpdateFailureTest, AFailedBlockIsNamedWithItsAddress) {
  const Ended ended = RunWith("wrong-status=0xE0@c3");
  EXPECT_EQ(ended.exitCode, 1);
  EXPECT_THAT(ended.err, StartsWith("Update Error!\n"
                                    "Step 3 of 4 failed: write block 2 of 2\n"
                                    "  Reason: the keyboard did not reply what it should\n"
                                    "  Command: write block at address 0x00001000\n"
                                    "  Sent: 07 00 10 00 00 88 03 "));
  EXPECT_THAT(ended.err, HasSubstr("\n  Expected: F4\n  Received: E0\n"));
  EXPECT_THAT(ended.out, ::testing::EndsWith("Step 2 of 4: write block 1 of 2\n"));
}

TEST_F(UpdateFailureTest, AWrongSumIsNamed) {
  const Ended ended = RunWith("wrong-sum@c4");
  EXPECT_EQ(ended.exitCode, 1);
  EXPECT_THAT(ended.err, HasSubstr("Step 4 of 4 failed: verify\n"));
  EXPECT_THAT(ended.err, HasSubstr("  Command: verify at address 0x00000000\n"
                                   "  Sent: 08 00 00 00 00 88 13 00 00 00\n"
                                   "  Expected: 08 00 00 00 00 88 13 00 00 "));
}

TEST_F(UpdateFailureTest, AKeyboardThatIsUnpluggedIsNamed) {
  const Ended ended = RunWith("remove-at@c3");
  EXPECT_EQ(ended.exitCode, 1);
  EXPECT_THAT(ended.err, HasSubstr("Step 3 of 4 failed: write block 2 of 2\n"
                                   "  Reason: no reply: the keyboard was removed"));
  EXPECT_THAT(ended.err, HasSubstr("\n  Received: nothing\n"));
}

TEST_F(UpdateFailureTest, AKeyboardThatCannotBeOpenedIsNamed) {
  const Ended ended = RunWith("open-fails@o1");
  EXPECT_EQ(ended.exitCode, 1);
  EXPECT_THAT(ended.err, HasSubstr("  Reason: the keyboard could not be opened"));
}

TEST_F(UpdateFailureTest, AnEndThatIsNotAcknowledgedIsDoneWithAWarning) {
  const Ended ended = RunWith("wrong-echo@c5");
  EXPECT_EQ(ended.exitCode, 0);
  EXPECT_EQ(ended.err, "Warning: the keyboard did not acknowledge the end of the update.\n");
  EXPECT_THAT(ended.out, HasSubstr("Update completed, "));
}

TEST_F(UpdateFailureTest, AKeyboardThatIsGoneAtTheEndIsDoneWithAWarning) {
  const Ended ended = RunWith("remove-at@c5");
  EXPECT_EQ(ended.exitCode, 0);
  EXPECT_EQ(ended.err, "Warning: the keyboard did not acknowledge the end of the update.\n");
}

}  // namespace
}  // namespace hollin
