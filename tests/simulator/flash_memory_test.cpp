// SPDX-License-Identifier: MIT
#include "simulator/flash_memory.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>

namespace hollin::simulator {
namespace {

class FlashMemoryTest : public testing::Test {
 protected:
  ~FlashMemoryTest() override { std::filesystem::remove(path); }

  [[nodiscard]] std::string FileText() const {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  void WriteFile(const std::string& text) const { std::ofstream(path, std::ios::binary) << text; }

  std::string path = testing::TempDir() + "flash-" + std::to_string(getpid());
};

TEST_F(FlashMemoryTest, ANewChipIsAllOnes) {
  const FlashMemory memory(3);
  EXPECT_EQ(Bytes(memory.Contents().begin(), memory.Contents().end()), (Bytes{0xFF, 0xFF, 0xFF}));
}

TEST_F(FlashMemoryTest, ProgrammingOnlyClearsBits) {
  FlashMemory memory(2);
  EXPECT_TRUE(memory.Program(0, Bytes{0xF0}));
  EXPECT_TRUE(memory.Program(0, Bytes{0x30}));
  EXPECT_FALSE(memory.Program(0, Bytes{0x0F, 0x12}));
  EXPECT_EQ(memory.Contents()[0], 0x00);
  EXPECT_EQ(memory.Contents()[1], 0x12);
}

TEST_F(FlashMemoryTest, EraseSetsItsRangeAndNothingElse) {
  FlashMemory memory(4);
  EXPECT_TRUE(memory.Program(0, Bytes{1, 2, 3, 4}));
  memory.Erase(1, 2);
  EXPECT_EQ(Bytes(memory.Contents().begin(), memory.Contents().end()), (Bytes{1, 0xFF, 0xFF, 4}));
  EXPECT_EQ(memory.erased, (std::vector<Range>{{1, 2}}));
  EXPECT_EQ(memory.programmed, (std::vector<Range>{{0, 4}}));
}

// Erased to 0x0FF0: the low byte's upper four bits and the high byte's lower four are ones.
TEST_F(FlashMemoryTest, AnotherErasedWordIsWhatBitsMoveAwayFrom) {
  FlashMemory memory(4, 0x0FF0);
  EXPECT_EQ(Bytes(memory.Contents().begin(), memory.Contents().end()),
            (Bytes{0xF0, 0x0F, 0xF0, 0x0F}));
  EXPECT_TRUE(memory.Program(0, Bytes{0x81, 0x18}));
  EXPECT_EQ(memory.Contents()[0], 0x81);
  EXPECT_EQ(memory.Contents()[1], 0x18);
  EXPECT_FALSE(memory.Program(0, Bytes{0xC0}));  // neither bit 6 nor bit 0 goes back
  EXPECT_EQ(memory.Contents()[0], 0x81);
  memory.ClearBeforeErase(1, 2);
  EXPECT_EQ(Bytes(memory.Contents().begin(), memory.Contents().end()),
            (Bytes{0x81, 0xF0, 0x0F, 0x0F}));
  memory.Erase(0, 2);
  EXPECT_EQ(memory.Contents()[0], 0xF0);
  EXPECT_EQ(memory.Contents()[1], 0x0F);
}

TEST_F(FlashMemoryTest, ARangeMayEndWithTheChipButNotBeyond) {
  const FlashMemory memory(8);
  EXPECT_TRUE(memory.Contains(7, 1));
  EXPECT_TRUE(memory.Contains(8, 0));
  EXPECT_FALSE(memory.Contains(7, 2));
  EXPECT_FALSE(memory.Contains(9, 0));
  EXPECT_FALSE(memory.Contains(1, std::numeric_limits<uint64_t>::max()));
}

TEST_F(FlashMemoryTest, ANewFileReceivesTheContentsAndEveryChange) {
  FlashMemory memory(3);
  memory.Program(0, Bytes{'a'});
  ASSERT_TRUE(memory.KeepIn(path));
  EXPECT_EQ(FileText(), "a\xFF\xFF");
  memory.Program(2, Bytes{'c'});
  EXPECT_EQ(FileText(),
            "a\xFF"
            "c");
}

TEST_F(FlashMemoryTest, AnExistingFileIsTakenOver) {
  WriteFile("xyz");
  FlashMemory memory(3);
  ASSERT_TRUE(memory.KeepIn(path));
  EXPECT_EQ(memory.Contents()[1], 'y');
}

TEST_F(FlashMemoryTest, AFileOfAnotherSizeIsRefusedAndLeftAlone) {
  for (const std::string text : {"xy", "xyzw"}) {
    WriteFile(text);
    FlashMemory memory(3);
    EXPECT_FALSE(memory.KeepIn(path));
    EXPECT_EQ(FileText(), text);
    EXPECT_EQ(memory.Contents()[0], 0xFF);
  }
}

TEST_F(FlashMemoryTest, AFolderOrAMissingFolderIsNoFile) {
  FlashMemory memory(3);
  EXPECT_FALSE(memory.KeepIn(testing::TempDir()));
  EXPECT_FALSE(memory.KeepIn(path + "/none/flash"));
}

}  // namespace
}  // namespace hollin::simulator
