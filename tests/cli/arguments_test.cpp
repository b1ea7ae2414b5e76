// SPDX-License-Identifier: MIT
#include "cli/arguments.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace hollin {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using Words = std::vector<std::string>;

const Words kPack = {"pack",   "--model", "TS30",   "--firmware-version", "2.0.1", "--pack",
                     "A1:d:i", "-o",      "out.dat"};

Words With(Words words, const Words& more) {
  words.insert(words.end(), more.begin(), more.end());
  return words;
}

class ArgumentsTest : public ::testing::Test {
 protected:
  static NothingToRun Nothing(const Words& words) {
    const Arguments arguments = ParseArguments(words);
    const auto* const nothing = std::get_if<NothingToRun>(&arguments);
    EXPECT_NE(nothing, nullptr) << ::testing::PrintToString(words);
    return nothing == nullptr ? NothingToRun{} : *nothing;
  }

  static PackArguments Pack(const Words& words) {
    const Arguments arguments = ParseArguments(words);
    const auto* const pack = std::get_if<PackArguments>(&arguments);
    EXPECT_NE(pack, nullptr) << ::testing::PrintToString(words);
    return pack == nullptr ? PackArguments{} : *pack;
  }
};

TEST_F(ArgumentsTest, WhatMakesNoSenseIsAUsageError) {
  const std::vector<Words> table = {
      {},
      {""},
      {"nonsense"},
      {"--nonsense"},
      {"update"},
      {"update", "a.dat", "b.dat"},
      {"update", "--nonsense", "a.dat"},
      {"update", "a.dat", "pack"},
      {"pack"},
      {"pack", "--model", "TS30"},
      With(kPack, {"extra"}),
      With(kPack, {"--model", "again"}),
      With(kPack, {"-o"}),
      With(kPack, {"--key", "Shift", "Play"}),
      With(kPack, {"--pack", "A1"}),
      With(kPack, {"--pack", "A1:d"}),
      With(kPack, {"--pack", "A1:d:"}),
      With(kPack, {"--pack", "A1::i"}),
      With(kPack, {"--pack", ":d:i"}),
      With(kPack, {"--pack", ""}),
  };
  for (const Words& words : table) {
    EXPECT_EQ(Nothing(words).exitCode, ExitCode::kUsage) << ::testing::PrintToString(words);
    EXPECT_NE(Nothing(words).text, "") << ::testing::PrintToString(words);
  }
}

TEST_F(ArgumentsTest, AskingForHelpIsNoError) {
  EXPECT_EQ(Nothing({"--help"}).exitCode, ExitCode::kDone);
  EXPECT_THAT(Nothing({"--help"}).text, HasSubstr("Usage: hollin-cli"));
  EXPECT_EQ(Nothing({"pack", "--help"}).exitCode, ExitCode::kDone);
  EXPECT_THAT(Nothing({"pack", "--help"}).text, HasSubstr("TYPE:DESCRIPTION:IMAGE"));
}

TEST_F(ArgumentsTest, AskingForTheVersionIsNoError) {
  EXPECT_EQ(Nothing({"--version"}).exitCode, ExitCode::kDone);
  EXPECT_THAT(Nothing({"--version"}).text, StartsWith("hollin-cli "));
}

TEST_F(ArgumentsTest, UpdateTakesOnePackage) {
  const Arguments arguments = ParseArguments({"update", "my package.dat"});
  EXPECT_EQ(std::get<UpdateArguments>(arguments).package, "my package.dat");
}

TEST_F(ArgumentsTest, APackageThatLooksLikeAnOptionFollowsTwoDashes) {
  const Arguments arguments = ParseArguments({"update", "--", "-x.dat"});
  EXPECT_EQ(std::get<UpdateArguments>(arguments).package, "-x.dat");
}

TEST_F(ArgumentsTest, PackTakesWhatAPackageIsMadeOf) {
  const PackArguments pack = Pack(With(kPack, {"--key", "Shift", "--key", "Play"}));
  EXPECT_EQ(pack.model, "TS30");
  EXPECT_EQ(pack.firmwareVersion, "2.0.1");
  EXPECT_THAT(pack.keys, ElementsAre("Shift", "Play"));
  ASSERT_EQ(pack.packs.size(), 1U);
  EXPECT_EQ(pack.packs[0].dataType, "A1");
  EXPECT_EQ(pack.packs[0].descriptionPath, "d");
  EXPECT_EQ(pack.packs[0].imagePath, "i");
  EXPECT_EQ(pack.output, "out.dat");
}

TEST_F(ArgumentsTest, ThePathOfAnImageMayHaveColons) {
  const PackArguments pack = Pack(With(kPack, {"--pack", "C1:desc.ini:C:\\a:b"}));
  ASSERT_EQ(pack.packs.size(), 2U);
  EXPECT_EQ(pack.packs[1].descriptionPath, "desc.ini");
  EXPECT_EQ(pack.packs[1].imagePath, "C:\\a:b");
}

TEST_F(ArgumentsTest, ThreeButtonsAreTheMost) {
  const Words two = With(kPack, {"--key", "1", "--key", "2"});
  EXPECT_EQ(Pack(two).keys.size(), 2U);
  EXPECT_EQ(Pack(With(two, {"--key", "3"})).keys.size(), 3U);
  EXPECT_EQ(Nothing(With(two, {"--key", "3", "--key", "4"})).exitCode, ExitCode::kUsage);
}

TEST_F(ArgumentsTest, TwoPacksAreTheMost) {
  EXPECT_EQ(Pack(With(kPack, {"--pack", "A2:d:i"})).packs.size(), 2U);
  EXPECT_EQ(Nothing(With(kPack, {"--pack", "A2:d:i", "--pack", "C1:d:i"})).exitCode,
            ExitCode::kUsage);
}

TEST_F(ArgumentsTest, NamesOfButtonsAreTakenAsTheyAre) {
  const PackArguments pack = Pack(With(kPack, {"--key", "[a,b]", "--key", "{}", "--key", ""}));
  EXPECT_THAT(pack.keys, ElementsAre("[a,b]", "{}", ""));
}

}  // namespace
}  // namespace hollin
