// SPDX-License-Identifier: MIT
// The program within this process, on scripted keyboards: what it says and how it ends before any
// keyboard is written.
#include "cli/program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <new>
#include <sstream>

#include "base/log.h"
#include "cli/signal_watch.h"
#include "package/package_writer.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/link_test.h"
#include "tests/support/recorded_pause.h"
#include "tests/support/temp_folder.h"

namespace hollin {
namespace {

using ::testing::ElementsAre;
using ::testing::StartsWith;

constexpr std::string_view kDescription = "[Chip Info]\nChip Size=4K\n";

class ProgramTest : public LinkTest {
 protected:
  ExitCode Run(const std::vector<std::string>& arguments) {
    return RunProgram(arguments, {.out = out, .err = err});
  }

  std::string MakePackage(const std::array<std::string, 3>& keys = {}) {
    const Bytes image = Counting(100);
    Bytes package;
    EXPECT_EQ(WritePackage({.productModel = "TS30",
                            .firmwareVersion = "1",
                            .keys = keys,
                            .packs = {{"A1", ViewOf(kDescription), image}}},
                           package),
              PackRefusal::kNone);
    return folder.Write("good.dat", package);
  }

  // What a test that failed before has left is not this one's fault.
  void SetUp() override {
    std::filesystem::remove("/tmp/TEMP1.INI");
    std::filesystem::remove("/tmp/TEMP1.BIN");
  }

  static bool HasTempFiles() {
    return std::filesystem::exists("/tmp/TEMP1.INI") || std::filesystem::exists("/tmp/TEMP1.BIN");
  }

  TempFolder folder;
  std::ostringstream out, err;
};

TEST_F(ProgramTest, HelpAndVersionGoToStandardOutput) {
  EXPECT_EQ(Run({"--version"}), ExitCode::kDone);
  EXPECT_THAT(out.str(), StartsWith("hollin-cli "));
  EXPECT_EQ(Run({"--help"}), ExitCode::kDone);
  EXPECT_EQ(err.str(), "");
}

TEST_F(ProgramTest, AUsageErrorIsToldEscapedOnStandardError) {
  EXPECT_EQ(Run({"update", "a", "\x1B[2J"}), ExitCode::kUsage);
  EXPECT_EQ(err.str(),
            "hollin-cli: The following argument was not expected: \\x1B[2J\n"
            "Run hollin-cli --help for more information.\n");
  EXPECT_EQ(out.str(), "");
}

TEST_F(ProgramTest, WithoutACommandOneIsAskedFor) {
  EXPECT_EQ(Run({}), ExitCode::kUsage);
  EXPECT_THAT(err.str(), StartsWith("hollin-cli: A command is required\n"));
}

TEST_F(ProgramTest, APackageThatCannotBeOpenedIsNamed) {
  EXPECT_EQ(Run({"update", "/nowhere/a.dat"}), ExitCode::kPackage);
  EXPECT_EQ(err.str(), "Unable to open dat file: /nowhere/a.dat\n");
  EXPECT_THAT(hidapi.calls, ElementsAre());
}

TEST_F(ProgramTest, AnInvalidPackageIsNamed) {
  const std::string path = folder.Write("bad.dat", "no package");
  EXPECT_EQ(Run({"update", path}), ExitCode::kPackage);
  EXPECT_EQ(err.str(),
            "Checksum or file format error: " + path + "\nhollin-cli inspect PACKAGE tells why.\n");
  EXPECT_THAT(hidapi.calls, ElementsAre());
}

TEST_F(ProgramTest, APackageThatIsRefusedLateLeavesNoTemporaryFiles) {
  Bytes package = folder.Read(MakePackage().substr(folder.Path().size() + 1));
  package.at(172) = 'B';  // no known type; found only after the files were written
  package.at(252)++;
  const std::string path = folder.Write("late.dat", package);
  EXPECT_EQ(Run({"update", path}), ExitCode::kPackage);
  EXPECT_FALSE(HasTempFiles());
}

TEST_F(ProgramTest, WithoutAKeyboardTheButtonsAreNamed) {
  hidapi.deviceCount = 0;
  EXPECT_EQ(Run({"update", MakePackage({"Shift", "Play"})}), ExitCode::kKeyboard);
  EXPECT_EQ(err.str(),
            "The TS30 is not connected. Please hold down the \"Shift\" and \"Play\"\n"
            "buttons while powering on the TS30.\n");
  EXPECT_THAT(hidapi.calls, ElementsAre("hid_enumerate", "hid_free_enumeration"));
  EXPECT_FALSE(HasTempFiles());
}

TEST_F(ProgramTest, CtrlCBeforeAnUpdateThatCannotBeginCountsAsAnInterrupt) {
  hidapi.deviceCount = 0;
  HoldBackSignals();
  kill(getpid(), SIGINT);
  EXPECT_EQ(Run({"update", MakePackage()}), ExitCode::kInterrupted);
  EXPECT_EQ(err.str(), "Interrupted before anything was written.\n");
  EXPECT_EQ(Run({"update", folder.Write("bad.dat", "no package")}), ExitCode::kInterrupted);
  EXPECT_FALSE(HasTempFiles());
  sigset_t interrupt;
  sigemptyset(&interrupt);
  sigaddset(&interrupt, SIGINT);
  int taken = 0;
  EXPECT_EQ(sigwait(&interrupt, &taken), 0);
}

TEST_F(ProgramTest, NamesOfButtonsCannotSteerTheTerminal) {
  hidapi.deviceCount = 0;
  EXPECT_EQ(Run({"update", MakePackage({"\x1B[2J"})}), ExitCode::kKeyboard);
  EXPECT_THAT(err.str(), ::testing::HasSubstr("hold down the \"\\x1B[2J\"\n"));
}

TEST_F(ProgramTest, ExactlyOneKeyboardIsUpdated) {
  hidapi.deviceCount = 2;
  EXPECT_EQ(Run({"update", MakePackage()}), ExitCode::kKeyboard);
  EXPECT_EQ(err.str(), "More than one device! Remove some devices\n");
  EXPECT_THAT(hidapi.calls, ElementsAre("hid_enumerate", "hid_free_enumeration"));
  EXPECT_FALSE(HasTempFiles());
}

TEST_F(ProgramTest, TheConfiguredIdsAreLookedFor) {
  hidapi.deviceCount = 0;
  EXPECT_EQ(Run({"update", MakePackage()}), ExitCode::kKeyboard);
  EXPECT_THAT(hidapi.enumeratedIds,
              ElementsAre(ScriptedHidapi::Ids(uint16_t{0x1C3E}, uint16_t{0x2B91})));
}

TEST_F(ProgramTest, AKeyboardThatCannotBeOpenedIsAFailedStep) {
  hidapi.failingOpen = 1;
  hidapi.Reply(Hex("09 01 00 00"));  // the end of the failed update opens it after all
  EXPECT_EQ(Run({"update", MakePackage()}), ExitCode::kFailed);
  EXPECT_THAT(err.str(), StartsWith("Update Error!\nStep 1 of 3 failed: enter update mode\n"
                                    "  Reason: "));
  EXPECT_FALSE(HasTempFiles());
}

// Memory that runs out, for one, fails a step without a word about it.
TEST_F(ProgramTest, ARetryThatWorkedIsNotTakenForTheReasonOfALaterFailure) {
  const RecordedPause pauses;
  hidapi.Reply(Hex("E0"));
  hidapi.Reply(Hex("F1"));
  hidapi.Reply(Hex("09 01 00 00"));
  SetLogFunction([](const std::string&) { throw std::bad_alloc(); });
  EXPECT_EQ(Run({"update", MakePackage()}), ExitCode::kFailed);
  SetLogFunction({});
  EXPECT_EQ(err.str(),
            "Update Error!\nStep 2 of 3 failed: write block 1 of 1\n  Reason: unknown\n");
}

}  // namespace
}  // namespace hollin
