// SPDX-License-Identifier: MIT
// Ctrl-C, and the signals that ask a program to end, during an update. The keyboard's process is
// halted meanwhile, so that the step at work lasts as long as the test wants.
#include <csignal>

#include "tests/cli/whole_program_test.h"
#include "tests/support/eventually.h"

namespace hollin {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

constexpr const char* kAdvice = "it must be updated again before it can be used";
constexpr const char* kStopping = "Stopping after this step.";

class UpdateInterruptTest : public WholeProgramTest {
 protected:
  // Halts the keyboard in the middle of an update of so many steps that it cannot be over.
  void HaltInUpdate() {
    ASSERT_TRUE(program.ReadUntil("Step 2 of 1026"));
    keyboard.Signal(SIGSTOP);
  }

  SimulatorProcess keyboard{bus, FlashIn("flash")};
  const Bytes image = Counting(0x10000);
  Subprocess program{SetupOf({"update", MakePackage({image}, "64")})};
};

TEST_F(UpdateInterruptTest, TheFirstCtrlCIsAnsweredWithAdviceAndTheUpdateGoesOn) {
  HaltInUpdate();
  program.Signal(SIGINT);
  ASSERT_TRUE(program.ReadUntil(kAdvice));
  keyboard.Signal(SIGCONT);
  EXPECT_EQ(program.Wait(), 0);
  EXPECT_THAT(program.Err(), Not(HasSubstr(kStopping)));
  EXPECT_EQ(Flash("flash", image.size()), image);
}

TEST_F(UpdateInterruptTest, TheSecondCtrlCEndsTheUpdateAtTheNextStep) {
  HaltInUpdate();
  program.Signal(SIGINT);
  ASSERT_TRUE(program.ReadUntil(kAdvice));
  program.Signal(SIGINT);
  ASSERT_TRUE(program.ReadUntil(kStopping));
  keyboard.Signal(SIGCONT);
  EXPECT_EQ(program.Wait(), 130);
  EXPECT_THAT(program.Err(), HasSubstr("Update stopped. The keyboard must be updated again"));
  // The end command with the flag for failure: total 4, offset 0, then the command.
  EXPECT_THAT(bus.Record(), HasSubstr("51 04 00 00 00 00 00 00 00 09 01 00 00"));
}

TEST_F(UpdateInterruptTest, TheThirdCtrlCEndsAtOnce) {
  HaltInUpdate();
  program.Signal(SIGINT);
  ASSERT_TRUE(program.ReadUntil(kAdvice));
  program.Signal(SIGINT);
  ASSERT_TRUE(program.ReadUntil(kStopping));
  program.Signal(SIGINT);
  EXPECT_EQ(program.Wait(), 130);
  EXPECT_THAT(program.Err(), Not(HasSubstr("Update stopped.")));
  keyboard.Signal(SIGCONT);
}

TEST_F(UpdateInterruptTest, ASignalThatAsksToEndEndsAtOnce) {
  HaltInUpdate();
  program.Signal(SIGTERM);
  EXPECT_EQ(program.Wait(), 130);
  keyboard.Signal(SIGCONT);
}

TEST_F(UpdateInterruptTest, AQuitFromTheKeyboardLeavesNoTemporaryFiles) {
  HaltInUpdate();
  program.Signal(SIGQUIT);
  EXPECT_EQ(program.Wait(), 130);
  keyboard.Signal(SIGCONT);
}

TEST_F(UpdateInterruptTest, SuspendingAndResumingDoesNotFailTheStep) {
  HaltInUpdate();
  program.Signal(SIGSTOP);
  program.Signal(SIGCONT);
  keyboard.Signal(SIGCONT);
  EXPECT_EQ(program.Wait(), 0);
}

// A keyboard that answers nothing any more, so that the program is in the middle of a step.
class UpdateInterruptOfASilentKeyboardTest : public WholeProgramTest {
 protected:
  [[nodiscard]] size_t Writes() const {
    const std::string record = bus.Record();
    size_t count = 0;
    for (size_t at = record.find("write"); at != std::string::npos;
         at = record.find("write", at + 1)) {
      count++;
    }
    return count;
  }

  SimulatorProcess keyboard{bus, {"--fault", "mute@h40"}};
  Subprocess program{SetupOf({"update", MakePackage({Counting(0x10000)}, "64")})};
};

TEST_F(UpdateInterruptOfASilentKeyboardTest, AStepThatFailsHasTheCodeOfAnInterrupt) {
  ASSERT_TRUE(Eventually([this] { return Writes() >= 40; }));
  program.Signal(SIGINT);
  ASSERT_TRUE(program.ReadUntil(kAdvice));
  program.Signal(SIGINT);
  ASSERT_TRUE(program.ReadUntil(kStopping));
  keyboard.Signal(SIGKILL);
  EXPECT_EQ(program.Wait(), 130);
  EXPECT_THAT(program.Err(), HasSubstr("Update Error!"));
}

}  // namespace
}  // namespace hollin
