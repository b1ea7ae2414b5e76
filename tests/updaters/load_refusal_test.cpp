// SPDX-License-Identifier: MIT
// Why an updater does not load, for files that it is handed in memory.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/hex_bytes.h"
#include "updaters/a1_update.h"
#include "updaters/a2_update.h"
#include "updaters/c1_update.h"

namespace hollin {
namespace {

constexpr std::string_view kGoodA2 =
    "[Flash Modle]\nm\n[Reserved Sector]\n0x9999\n[Block Size]\n=4096\n[Time]\n"
    "MaxWriteBack=1\nMaxSectorEraseTime=1000\n[Sector Erase Cycle]\nEraseCycles=0\n"
    "[Program Cycle]\nProgramCycles=0\n[Write Buffer Cycle]\nWriteBufferCycles=0\n"
    "[Program Buffer Cycle]\nProgramBufferCycles=0\n[Sector Address List]\n0\n64\n";
constexpr std::string_view kGoodC1 = "[Reserved Sector]\n0\n";

class LoadRefusalTest : public ::testing::Test {
 protected:
  template <typename Updater>
  LoadRefusal RefusalOf(std::string_view description, size_t imageSize = 100) {
    Updater updater("description", "image");
    updater.listener = {};
    updater.readFile = [&](const std::string& path, FileContents& contents) {
      const Bytes image = Filled(imageSize, 0x55);
      const ByteView bytes = path == "image" ? ByteView(image) : ViewOf(description);
      contents.size = bytes.size();
      contents.bytes = std::make_unique<uint8_t[]>(bytes.size());
      std::copy(bytes.begin(), bytes.end(), contents.bytes.get());
      return path != unreadable;
    };
    const bool isLoaded = updater.LoadFiles();
    EXPECT_EQ(isLoaded, updater.refusal == LoadRefusal::kNone);
    return updater.refusal;
  }

  // The good A2 description with more lines, of which the last counts.
  LoadRefusal A2With(const std::string& lines, size_t imageSize = 100) {
    return RefusalOf<A2Update>(std::string(kGoodA2) + lines, imageSize);
  }

  LoadRefusal C1With(const std::string& lines) {
    return RefusalOf<C1Update>(std::string(kGoodC1) + lines);
  }

  std::string unreadable;
};

TEST_F(LoadRefusalTest, GoodFilesAreRefusedForNothing) {
  EXPECT_EQ(RefusalOf<A1Update>("[Chip Info]\nChip Size=100"), LoadRefusal::kNone);
  EXPECT_EQ(A2With(""), LoadRefusal::kNone);
  EXPECT_EQ(C1With(""), LoadRefusal::kNone);
}

TEST_F(LoadRefusalTest, OfA1) {
  EXPECT_EQ(RefusalOf<A1Update>("[Chip Info]\nx"), LoadRefusal::kDescription);
  EXPECT_EQ(RefusalOf<A1Update>(""), LoadRefusal::kNoChipSize);
  EXPECT_EQ(RefusalOf<A1Update>("[Chip Info]\nChip Size=1K\n[Transmission Info]\nData Length=65"),
            LoadRefusal::kDataLength);
  EXPECT_EQ(RefusalOf<A1Update>("[Chip Info]\nChip Size=99"), LoadRefusal::kImageTooLong);
  EXPECT_EQ(RefusalOf<A1Update>("[Chip Info]\nChip Size=99", 0), LoadRefusal::kImageEmpty);
}

TEST_F(LoadRefusalTest, OfA2) {
  EXPECT_EQ(A2With("[Data]\nx"), LoadRefusal::kDescription);
  EXPECT_EQ(RefusalOf<A2Update>(""), LoadRefusal::kNoFlashModel);
  EXPECT_EQ(RefusalOf<A2Update>("[Flash Modle]\nm"), LoadRefusal::kNoReservedSector);
  EXPECT_EQ(A2With("[Block Size]\n=0"), LoadRefusal::kBlockSize);
  EXPECT_EQ(A2With("[Block Size]\n=4097"), LoadRefusal::kBlockSize);
  EXPECT_EQ(A2With("[Block Size]\n=0x10002"), LoadRefusal::kBlockSize);
  EXPECT_EQ(A2With("[Time]\nMaxWriteBack=0"), LoadRefusal::kNoWriteBackTime);
  EXPECT_EQ(A2With("[Time]\nMaxSectorEraseTime=0"), LoadRefusal::kNoEraseTime);
  EXPECT_EQ(A2With("[Sector Erase Cycle]\nAddr=1"), LoadRefusal::kEraseCycles);
  EXPECT_EQ(A2With("[Program Cycle]\nData=1"), LoadRefusal::kProgramCycles);
  EXPECT_EQ(A2With("[Write Buffer Cycle]\nWriteBufferCycles=1"), LoadRefusal::kWriteBufferCycles);
  EXPECT_EQ(A2With("[Program Buffer Cycle]\nProgramBufferCycles=1"),
            LoadRefusal::kProgramBufferCycles);
  const std::string noSectors(kGoodA2.substr(0, kGoodA2.find("[Sector Address")));
  EXPECT_EQ(RefusalOf<A2Update>(noSectors), LoadRefusal::kNoSectors);
  EXPECT_EQ(RefusalOf<A2Update>(noSectors + "[Sector Address List]\n0"), LoadRefusal::kOneSector);
  EXPECT_EQ(A2With("[File Offset]\nFileOffset=201"), LoadRefusal::kFileOffset);
  EXPECT_EQ(A2With("", 0), LoadRefusal::kImageEmpty);
  EXPECT_EQ(A2With("", 256), LoadRefusal::kNone);
  EXPECT_EQ(A2With("", 257), LoadRefusal::kImageTooLong);
}

// Everything is wrong, and one thing after the other is mended: what comes first is what is told.
TEST_F(LoadRefusalTest, OfA2ComeInTheirOrder) {
  const std::vector<std::pair<std::string, LoadRefusal>> mendings = {
      {"[Block Size]\n=0\n[Time]\nMaxWriteBack=0\nMaxSectorEraseTime=0\n"
       "[Sector Erase Cycle]\nAddr=1\n[Program Cycle]\nAddr=1\n[Write Buffer Cycle]\nAddr=1\n"
       "[Program Buffer Cycle]\nAddr=1\n",
       LoadRefusal::kNoFlashModel},
      {"[Flash Modle]\nm\n", LoadRefusal::kNoReservedSector},
      {"[Reserved Sector]\n0x9999\n", LoadRefusal::kBlockSize},
      {"[Block Size]\n=4096\n", LoadRefusal::kNoWriteBackTime},
      {"[Time]\nMaxWriteBack=1\n", LoadRefusal::kNoEraseTime},
      {"[Time]\nMaxSectorEraseTime=1000\n", LoadRefusal::kEraseCycles},
      {"[Sector Erase Cycle]\nEraseCycles=1\nData=1\n", LoadRefusal::kProgramCycles},
      {"[Program Cycle]\nProgramCycles=1\nData=1\n", LoadRefusal::kWriteBufferCycles},
      {"[Write Buffer Cycle]\nWriteBufferCycles=1\nData=1\n", LoadRefusal::kProgramBufferCycles},
      {"[Program Buffer Cycle]\nProgramBufferCycles=1\nData=1\n", LoadRefusal::kNoSectors},
      {"[Sector Address List]\n0\n64\n", LoadRefusal::kNone},
  };
  std::string description;
  for (const auto& [mending, refusal] : mendings) {
    description += mending;
    EXPECT_EQ(RefusalOf<A2Update>(description), refusal) << "after " << mending;
  }
}

TEST_F(LoadRefusalTest, OfC1) {
  EXPECT_EQ(C1With("[Line Mode]\nx"), LoadRefusal::kDescription);
  EXPECT_EQ(RefusalOf<C1Update>(""), LoadRefusal::kNoReservedSector);
  EXPECT_EQ(C1With("[Line Mode]\n=3"), LoadRefusal::kLineMode);
  EXPECT_EQ(C1With("[SPI Number]\n=2"), LoadRefusal::kSpiNumber);
  EXPECT_EQ(C1With("[Chip Select Number]\n=2"), LoadRefusal::kChipSelect);
  EXPECT_EQ(C1With("[Sector Size]\n=0"), LoadRefusal::kNoSectorSize);
  EXPECT_EQ(RefusalOf<C1Update>(kGoodC1, 0), LoadRefusal::kImageEmpty);
}

TEST_F(LoadRefusalTest, FilesThatCannotBeRead) {
  unreadable = "image";
  EXPECT_EQ(RefusalOf<A1Update>("[Chip Info]\nChip Size=100"), LoadRefusal::kUnreadable);
  EXPECT_EQ(C1With(""), LoadRefusal::kUnreadable);
  unreadable = "description";
  EXPECT_EQ(A2With(""), LoadRefusal::kUnreadable);
  EXPECT_EQ(C1With(""), LoadRefusal::kUnreadable);
}

}  // namespace
}  // namespace hollin
