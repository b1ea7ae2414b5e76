// SPDX-License-Identifier: MIT
// Whole updates that go well, and those that are refused before they begin.
#include <sstream>

#include "tests/cli/whole_program_test.h"

namespace hollin {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class UpdateTest : public WholeProgramTest {
 protected:
  [[nodiscard]] std::vector<std::string> RecordLines() const {
    std::istringstream record(bus.Record());
    std::vector<std::string> lines;
    for (std::string line; std::getline(record, line);) lines.push_back(line);
    return lines;
  }
};

constexpr const char* kCompleted =
    "Update completed, please use the TS30 power switch to restart the keyboard.";

TEST_F(UpdateTest, TheFlashHoldsTheImageAndTheRestIsErased) {
  const SimulatorProcess keyboard(bus, FlashIn("flash"));
  const Bytes image = Counting(10000, 7);
  const Ended ended = Run({"update", MakePackage({image})});
  EXPECT_EQ(ended.exitCode, 0);
  EXPECT_EQ(ended.err, "");
  EXPECT_EQ(ended.out,
            "Updating to TS30 2.0.1 in 5 steps\n"
            "Step 1 of 5: enter update mode\n"
            "Step 2 of 5: write block 1 of 3\n"
            "Step 3 of 5: write block 2 of 3\n"
            "Step 4 of 5: write block 3 of 3\n"
            "Step 5 of 5: verify\n"
            "Update completed, please use the TS30 power switch to restart the keyboard.\n");
  EXPECT_EQ(Flash("flash", 10016), image + Filled(16, 0xFF));
}

TEST_F(UpdateTest, ABlockOf65536BytesArrivesWhole) {
  const SimulatorProcess keyboard(bus, FlashIn("flash"));
  const Bytes image = Counting(2 * 65536 + 1, 1);
  EXPECT_EQ(Run({"update", MakePackage({image}, "64K")}).exitCode, 0);
  EXPECT_EQ(Flash("flash", image.size()), image);
}

TEST_F(UpdateTest, TwoPacksAreWrittenOneAfterTheOther) {
  const SimulatorProcess keyboard(bus, FlashIn("flash"));
  const Bytes first = Counting(9000, 1);
  const Bytes second = Filled(4096, 0x55);
  const Ended ended = Run({"update", MakePackage({first, second})});
  EXPECT_EQ(ended.exitCode, 0);
  EXPECT_THAT(ended.out, HasSubstr("Step 6 of 8: enter update mode (pack 2)\n"));
  Bytes expected = first;
  std::copy(second.begin(), second.end(), expected.begin());
  EXPECT_EQ(Flash("flash", 9000), expected);
}

// The beginning of every line of the record; behind it stand the bytes that fill the reports.
TEST_F(UpdateTest, HidapiIsCalledAndPausesAreMadeInThisOrder) {
  const SimulatorProcess keyboard(bus);
  EXPECT_EQ(Run({"update", MakePackage({Filled(65, 0x01)})}).exitCode, 0);
  const std::vector<std::string> expected = {
      "enumerate 1c3e 2b91 -> 1",
      "free-enumeration",
      "enumerate 1c3e 2b91 -> 1",
      "free-enumeration",
      "open 1c3e 2b91 -> ok",
      "write 51 04 00 00 00 00 00 00 00 01 0a 4d 02",
      "read 51 00 00 00 00 01 00 00 00 f1",
      "pause 0.500000000",
      "write 51 0c 00 00 00 00 00 00 00 07 00 00 00 00 41 00 41 00 00 00 00",
      "read 51 00 00 00 00 0c 00 00 00 07 00 00 00 00 41 00 41 00 00 00 00",
      "write 51 40 00 00 00 00 00 00 00 01 01 01",
      "write 51 40 00 00 00 37 00 00 00 01 01 01 01 01 01 01 01 01",
      "write 51 01 00 00 00 00 00 00 00 01",
      "read 51 00 00 00 00 01 00 00 00 f4",
      "read 51 00 00 00 00 01 00 00 00 d4",
      "pause 0.500000000",
      "write 51 0a 00 00 00 00 00 00 00 08 00 00 00 00 41 00 00 00 00",
      "read 51 00 00 00 00 0b 00 00 00 08 00 00 00 00 41 00 00 00 41 00",
      "pause 0.500000000",
      "write 51 04 00 00 00 00 00 00 00 09 00 00 00",
      "read 51 00 00 00 00 04 00 00 00 09 00 00 00",
      "close",
      "exit",
  };
  std::vector<std::string> record = RecordLines();
  ASSERT_EQ(record.size(), expected.size()) << bus.Record();
  for (size_t i = 0; i < record.size(); i++) EXPECT_THAT(record[i], StartsWith(expected[i])) << i;
}

TEST_F(UpdateTest, WithoutAKeyboardNothingBegins) {
  const Ended ended = Run({"update", MakePackage({Counting(100)})});
  EXPECT_EQ(ended.exitCode, 4);
  EXPECT_EQ(ended.out, "");
  EXPECT_EQ(ended.err,
            "The TS30 is not connected. Please hold down the \"Shift\"\n"
            "buttons while powering on the TS30.\n");
}

TEST_F(UpdateTest, WithTwoKeyboardsNeitherIsWritten) {
  const SimulatorProcess one(bus, FlashIn("one"));
  const SimulatorProcess other(bus, FlashIn("other"));
  const Ended ended = Run({"update", MakePackage({Counting(100)})});
  EXPECT_EQ(ended.exitCode, 4);
  EXPECT_EQ(ended.err, "More than one device! Remove some devices\n");
  EXPECT_EQ(Flash("one", 100), Filled(100, 0xFF));
  EXPECT_EQ(Flash("other", 100), Filled(100, 0xFF));
}

TEST_F(UpdateTest, KeyboardsWithOtherIdsDoNotCount) {
  const SimulatorProcess stranger(bus, {"--pid", "2b92"});
  EXPECT_EQ(Run({"update", MakePackage({Counting(100)})}).exitCode, 4);
}

TEST_F(UpdateTest, InvalidPackagesAreRefusedAndNothingIsSent) {
  const SimulatorProcess keyboard(bus, FlashIn("flash"));
  const std::string good = MakePackage({Counting(100)});
  Bytes flipped = folder.Read("package.dat");
  flipped.back() ^= 1;
  struct Row {
    std::string path, words, advice;
  };
  const std::string advice = "hollin-cli inspect PACKAGE tells why.\n";
  const std::vector<Row> table = {
      {folder.Path("nowhere.dat"), "Unable to open dat file: ", ""},
      {folder.Path(), "Unable to open dat file: ", ""},
      {folder.Write("empty.dat", ""), "Unable to open dat file: ", ""},
      {folder.Write("short.dat", "x"), "Checksum or file format error: ", advice},
      {folder.Write("flipped.dat", flipped), "Checksum or file format error: ", advice},
  };
  for (const auto& [path, words, then] : table) {
    const Ended ended = Run({"update", path});
    EXPECT_EQ(ended.exitCode, 3) << path;
    EXPECT_EQ(ended.err, std::string(words).append(path).append("\n").append(then));
    EXPECT_EQ(ended.out, "");
  }
  EXPECT_EQ(bus.Record(), "");
}

TEST_F(UpdateTest, OnATerminalThereIsABarAndTheLogDoesNotGarbleIt) {
  const SimulatorProcess keyboard(bus);
  const Ended ended = Run({"update", MakePackage({Counting(100)})}, true);
  EXPECT_EQ(ended.exitCode, 0);
  EXPECT_THAT(ended.out,
              HasSubstr("\r\x1B[K[...............]   0%  step 1/3  0:00  enter update mode"));
  // A line of the log begins where the bar was erased, and the bar follows in a line of its own.
  EXPECT_THAT(ended.out, HasSubstr("\r\x1B[K1\r\n\r\x1B[K[#########......]  66%  step 3/3"));
  EXPECT_THAT(ended.out, EndsWith("[###############] 100%  step 3/3  0:00\r\n" +
                                  std::string(kCompleted) + "\r\n"));
}

TEST_F(UpdateTest, OutputThatNobodyReadsDoesNotEndTheUpdate) {
  const SimulatorProcess keyboard(bus, FlashIn("flash"));
  const Bytes image = Counting(10000);
  Subprocess::Setup setup = SetupOf({"update", MakePackage({image})});
  setup.command.insert(setup.command.begin(),
                       {"/bin/sh", "-c", R"({ "$@"; echo "code $?" >&2; } | true)", "sh"});
  Subprocess program(setup);
  program.Wait();
  EXPECT_THAT(program.Err(), EndsWith("code 0\n"));
  EXPECT_EQ(Flash("flash", image.size()), image);
}

}  // namespace
}  // namespace hollin
