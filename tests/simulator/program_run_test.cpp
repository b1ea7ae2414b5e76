// SPDX-License-Identifier: MIT
// ts30-simulator with a program to run on its keyboard.
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>

#include "tests/support/subprocess.h"
#include "tests/support/temp_folder.h"

namespace hollin {
namespace {

class ProgramRunTest : public testing::Test {
 protected:
  struct Ended {
    int exitCode;
    std::string out, err;
  };

  Ended Run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), SIMULATOR);
    Subprocess simulator({.command = arguments, .environment = {{"TMPDIR", folder.Path()}}});
    const int exitCode = simulator.Wait();
    return {exitCode, simulator.Out(), simulator.Err()};
  }
  Ended RunShell(const std::string& script) { return Run({"--", "sh", "-c", script}); }
  [[nodiscard]] bool NothingIsLeft() const { return std::filesystem::is_empty(folder.Path()); }

  TempFolder folder;  // where the simulator makes its own
};

TEST_F(ProgramRunTest, TheProgramFindsTheKeyboardThroughTheStandIn) {
  const Ended ended = Run({"--", CLIENT, "enumerate", "open"});
  EXPECT_EQ(ended.exitCode, 0) << ended.err;
  EXPECT_EQ(ended.out, "1 keyboards\nopened\n");
}

TEST_F(ProgramRunTest, TheKeyboardHasTheIdsThatWereAskedFor) {
  const Ended ended = Run({"--vid", "1234", "--", CLIENT, "enumerate", "enumerate-any"});
  EXPECT_EQ(ended.out, "0 keyboards\n1 keyboards\n");
}

TEST_F(ProgramRunTest, TheExitCodeIsTheProgramsOwn) { EXPECT_EQ(RunShell("exit 7").exitCode, 7); }

TEST_F(ProgramRunTest, AProgramEndedByASignalGivesTheCodeThatShellsGive) {
  EXPECT_EQ(RunShell("kill -KILL $$").exitCode, 128 + SIGKILL);
}

TEST_F(ProgramRunTest, AProgramThatIsNotThereIsNamed) {
  const Ended ended = Run({"--", "/no/such/program"});
  EXPECT_EQ(ended.exitCode, 127);
  EXPECT_EQ(ended.err,
            "ts30-simulator: cannot start /no/such/program: No such file or directory\n");
}

TEST_F(ProgramRunTest, ItsArgumentsArePassedOnAsTheyAre) {
  EXPECT_EQ(Run({"--", "printf", "%s|", "--help", "a b", ""}).out, "--help|a b||");
}

TEST_F(ProgramRunTest, NothingIsLeftBehind) {
  ASSERT_EQ(RunShell("test -S \"$TS30_SIMULATOR_DIR\"/*.socket").exitCode, 0);
  EXPECT_TRUE(NothingIsLeft());
}

TEST_F(ProgramRunTest, LibraryFoldersOfTheCallerStayBehindTheStandIn) {
  Subprocess simulator({.command = {SIMULATOR, "--", "printenv", "LD_LIBRARY_PATH"},
                        .environment = {{"LD_LIBRARY_PATH", "/some/folder"}}});
  EXPECT_EQ(simulator.Wait(), 0);
  EXPECT_EQ(simulator.Out(), STANDIN_DIRECTORY ":/some/folder\n");
}

TEST_F(ProgramRunTest, InterruptsAreTheProgramsBusiness) {
  Subprocess simulator(
      {.command = {SIMULATOR, "--", "sh", "-c", "trap 'exit 5' TERM; echo up; read -r line"},
       .environment = {{"TMPDIR", folder.Path()}},
       .onTerminal = true});
  ASSERT_TRUE(simulator.ReadUntil("up"));
  simulator.Signal(SIGINT);  // to the simulator alone: it must not mind
  simulator.Signal(SIGTERM);
  EXPECT_EQ(simulator.Wait(), 5);
  EXPECT_TRUE(NothingIsLeft());
}

TEST_F(ProgramRunTest, AProgramAndAGadgetExcludeEachOther) {
  EXPECT_EQ(Run({"--usb-gadget", "--", "true"}).exitCode, 2);
}

}  // namespace
}  // namespace hollin
