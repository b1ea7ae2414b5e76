// SPDX-License-Identifier: MIT
#include "cli/pack_command.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "cli/json.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/temp_folder.h"

namespace hollin {
namespace {

using ::testing::HasSubstr;

class PackCommandTest : public ::testing::Test {
 protected:
  PackCommandTest() {
    folder.Write("a.ini", "[Chip Info]\nChip Size=1K\n");
    folder.Write("a.bin", Hex("01 02 03"));
    arguments = {.model = "TS30",
                 .firmwareVersion = "2.0.1",
                 .keys = {"Shift"},
                 .packs = {{"A1", folder.Path("a.ini"), folder.Path("a.bin")}},
                 .output = folder.Path("out.dat")};
  }

  ExitCode Run() {
    out.str("");
    err.str("");
    return RunPackCommand(arguments, {.out = out, .err = err});
  }

  void ExpectRefusal(ExitCode code, const std::string& words) {
    EXPECT_EQ(Run(), code);
    EXPECT_THAT(err.str(), HasSubstr(words));
    EXPECT_EQ(out.str(), "");
    EXPECT_FALSE(std::filesystem::exists(arguments.output));
  }

  TempFolder folder;
  PackArguments arguments;
  std::ostringstream out, err;
};

TEST_F(PackCommandTest, WritesThePackage) {
  EXPECT_EQ(Run(), ExitCode::kDone);
  EXPECT_EQ(out.str(), arguments.output + ": 284 bytes, 1 pack\n");
  const Bytes package = folder.Read("out.dat");
  ASSERT_EQ(package.size(), 284U);
  const auto at = [&](size_t offset, size_t size) {
    const auto begin = package.begin() + static_cast<ptrdiff_t>(offset);
    return Bytes(begin, begin + static_cast<ptrdiff_t>(size));
  };
  EXPECT_EQ(at(32, 5), Hex("54 53 33 30 00"));            // model
  EXPECT_EQ(at(48, 6), Hex("32 2E 30 2E 31 00"));         // version
  EXPECT_EQ(at(80, 6), Hex("53 68 69 66 74 00"));         // first button
  EXPECT_EQ(at(88, 16), Filled(16, 0));                   // no other buttons
  EXPECT_EQ(at(123, 1), Hex("01"));                       // packs
  EXPECT_EQ(at(172, 4), Hex("41 31 00 00"));              // type
  EXPECT_EQ(at(192, 8), Hex("00 01 00 00 19 00 00 00"));  // description: at 256, 25 bytes
  EXPECT_EQ(at(240, 12), Hex("19 01 00 00 03 00 00 00 06 00 00 00"));  // image: at 281, 3, sum 6
  EXPECT_EQ(at(281, 3), Hex("01 02 03"));
}

TEST_F(PackCommandTest, TheSameInputsGiveTheSameBytes) {
  EXPECT_EQ(Run(), ExitCode::kDone);
  const Bytes first = folder.Read("out.dat");
  EXPECT_EQ(Run(), ExitCode::kDone);
  EXPECT_EQ(folder.Read("out.dat"), first);
}

TEST_F(PackCommandTest, TwoPacksAreWrittenInTheirOrder) {
  folder.Write("b.bin", Hex("FF"));
  folder.Write("b.ini", "[Reserved Sector]\n0\n");
  arguments.packs.push_back({"C1", folder.Path("b.ini"), folder.Path("b.bin")});
  EXPECT_EQ(Run(), ExitCode::kDone);
  EXPECT_THAT(out.str(), HasSubstr(", 2 packs\n"));
  const Bytes package = folder.Read("out.dat");
  EXPECT_EQ(package.at(123), 2);
  EXPECT_EQ(package.at(172 + 1), '1');
  EXPECT_EQ(package.at(300), 'C');
  EXPECT_EQ(package.back(), 0xFF);
}

TEST_F(PackCommandTest, TextsMayFillTheirFieldsButNotExceedThem) {
  arguments.model = std::string(15, 'm');
  EXPECT_EQ(Run(), ExitCode::kDone);
  arguments.model = std::string(16, 'm');
  EXPECT_EQ(Run(), ExitCode::kDone);
  std::filesystem::remove(arguments.output);
  arguments.model = std::string(17, 'm');
  ExpectRefusal(ExitCode::kUsage, "The model (--model) is longer than 16 bytes.");
  arguments.model = "TS30";
  arguments.firmwareVersion = std::string(17, 'v');
  ExpectRefusal(ExitCode::kUsage, "The firmware version");
  arguments.firmwareVersion = "1";
  arguments.keys = {"Shift", "123456789"};
  ExpectRefusal(ExitCode::kUsage, "The name of a button");
}

TEST_F(PackCommandTest, AnUnknownTypeIsRefused) {
  arguments.packs[0].dataType = "B1";
  ExpectRefusal(ExitCode::kUsage, "none of A1, A2 and C1");
}

TEST_F(PackCommandTest, AnInputThatCannotBeReadIsNamed) {
  arguments.packs[0].imagePath = folder.Path("nowhere\n.bin");
  ExpectRefusal(ExitCode::kPackage, "Unable to read file: " + folder.Path("nowhere\\x0A.bin"));
  arguments.packs[0].descriptionPath = folder.Path();
  ExpectRefusal(ExitCode::kPackage, "Unable to read file: " + folder.Path());
}

TEST_F(PackCommandTest, AnOutputThatCannotBeWrittenIsNamedWithTheReason) {
  arguments.output = folder.Path("nowhere/out.dat");
  ExpectRefusal(ExitCode::kFailed, "nowhere/out.dat: No such file or directory");
}

TEST_F(PackCommandTest, FindingsAreToldAndAnErrorOnRequest) {
  folder.Write("a.ini", "[Chip Info]\nChip Size=1M\n");
  EXPECT_EQ(Run(), ExitCode::kDone);
  EXPECT_THAT(out.str(),
              HasSubstr("\nFindings: 1\n  number-suffix-1024: pack 1, line 2, column 11"));
  arguments.strict = true;
  EXPECT_EQ(Run(), ExitCode::kPackage);
  EXPECT_EQ(err.str(), "");
}

TEST_F(PackCommandTest, APackageThatIsNotValidIsWrittenButAnError) {
  folder.Write("a.ini", "[Chip Info]\n");
  EXPECT_EQ(Run(), ExitCode::kPackage);
  EXPECT_EQ(err.str(),
            "The package is written, but it is not valid: a1-chip-size: pack 1 (A1): the "
            "description gives no \"Chip Size\", or 0\n");
  EXPECT_TRUE(std::filesystem::exists(arguments.output));
}

TEST_F(PackCommandTest, AsJsonItTellsWhatInspectTells) {
  arguments.json = true;
  EXPECT_EQ(Run(), ExitCode::kDone);
  const Json json = Json::parse(out.str());
  EXPECT_EQ(json["file"], arguments.output);
  EXPECT_EQ(json["valid"], true);
  EXPECT_EQ(json["totalSteps"], 3);
}

TEST_F(PackCommandTest, AsJsonErrorsAreJsonToo) {
  arguments.json = true;
  arguments.packs[0].dataType = "B1";
  EXPECT_EQ(Run(), ExitCode::kUsage);
  EXPECT_EQ(err.str(), "");
  EXPECT_EQ(Json::parse(out.str())["error"]["code"], "not-representable");
}

}  // namespace
}  // namespace hollin
