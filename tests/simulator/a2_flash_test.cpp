// SPDX-License-Identifier: MIT
#include "simulator/a2_flash.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <vector>

#include "simulator/keyboard.h"
#include "tests/simulator/host.h"

namespace hollin::simulator {
namespace {

using std::chrono::milliseconds;

// A chip with sectors of 0x1000 words at 0x0000, 0x1000 and 0x2000; an erase takes 100 ms.
class A2FlashTest : public testing::Test {
 protected:
  A2FlashTest() { Plug({.sectors = {0x0000, 0x1000, 0x2000}, .eraseTime = milliseconds(100)}); }

  void Plug(A2Profile profile) {
    keyboard = std::make_unique<Keyboard>(KeyboardOptions{.a2 = std::move(profile)});
    host = std::make_unique<Host>(*keyboard);
    host->Ask(kModeA2);
  }
  // Sends the cycles and expects their echoes.
  void Cycles(const std::vector<Bytes>& cycles) {
    for (const Bytes& cycle : cycles) EXPECT_EQ(host->Ask(cycle), cycle);
  }
  const FlashMemory& Memory() { return keyboard->A2().memory; }
  // The word that a poll of sector 0x1000 reads.
  uint32_t Poll() {
    const Bytes reply = host->Ask({0x03, 0x00, 0x10, 0, 0});
    EXPECT_EQ(reply.size(), 7U);
    EXPECT_EQ(reply[2], 0x10);
    return uint32_t{reply[5]} | uint32_t{reply[6]} << 8;
  }
  void EraseSector1() {
    Cycles(erase);
    keyboard->PassTime(milliseconds(100));
    ASSERT_EQ(Poll(), 0xFFFFu);
  }

  // The erase command for sector 0x1000.
  const std::vector<Bytes> erase = {
      {0x02, 0x55, 0x15, 0, 0, 0xAA, 0}, {0x02, 0xAA, 0x12, 0, 0, 0x55, 0},
      {0x02, 0x55, 0x15, 0, 0, 0x80, 0}, {0x02, 0x55, 0x15, 0, 0, 0xAA, 0},
      {0x02, 0xAA, 0x12, 0, 0, 0x55, 0}, {0x02, 0x00, 0x10, 0, 0, 0x30, 0}};
  const Bytes program = {0x04, 6, 0x55, 0x05, 0xAA, 0, 0xAA, 0x02, 0x55, 0, 0x55, 0x05, 0xA0, 0};
  const Bytes writeBuffer = {0x05, 8,    0x0F, 3, 0xFF, 4,    0xFF, 0x55, 0x05, 0xAA, 0, 0xAA,
                             0x02, 0x55, 0,    0, 0,    0x25, 0,    0,    0,    0x0F, 0};
  const Bytes programBuffer = {0x06, 2, 1, 0xFF, 0, 0, 0x29, 0};
  // Two words 0x0201 and 0x0403 at word 0x1000; their sum is 0x0604.
  const Bytes header = {0x07, 0x00, 0x10, 0, 0, 2, 0, 0x04, 0x06, 0, 0, 0};
  const Bytes data = {1, 2, 3, 4};

  std::unique_ptr<Keyboard> keyboard;
  std::unique_ptr<Host> host;
};

TEST_F(A2FlashTest, AnEraseTakesItsTimeAndThenReadsAsErased) {
  Cycles(erase);
  EXPECT_NE(Poll(), 0xFFFFu);
  keyboard->PassTime(milliseconds(99));
  EXPECT_NE(Poll(), 0xFFFFu);
  EXPECT_TRUE(Memory().erased.empty());
  keyboard->PassTime(milliseconds(1));
  EXPECT_EQ(Poll(), 0xFFFFu);
  EXPECT_EQ(Memory().erased, (std::vector<Range>{{0x2000, 0x2000}}));
}

TEST_F(A2FlashTest, ABusyChipTogglesAndAnIdleOneReadsItsWords) {
  Cycles(erase);
  const uint32_t first = Poll();
  EXPECT_NE(Poll(), first);
  EXPECT_EQ(Poll(), first);
  EXPECT_EQ(host->Ask({0x03, 0x00, 0x30, 0, 0}).size(), 7U);
}

TEST_F(A2FlashTest, AMissingWrongOrMisplacedCycleErasesNothing) {
  for (size_t wrong = 0; wrong < erase.size(); wrong++) {
    for (const size_t byte : {1U, 2U, 5U}) {
      auto cycles = erase;
      cycles[wrong][byte] ^= 0x10;
      Cycles(cycles);
    }
    auto fewer = erase;
    fewer.erase(fewer.begin() + static_cast<long>(wrong));
    Cycles(fewer);
    keyboard->PassTime(milliseconds(100));
    Poll();
  }
  EXPECT_TRUE(Memory().erased.empty());
}

TEST_F(A2FlashTest, AnEraseMustNotMixSectors) {
  auto cycles = erase;
  cycles[5] = {0x02, 0x00, 0x20, 0, 0, 0x30, 0};
  Cycles(cycles);
  keyboard->PassTime(milliseconds(100));
  Poll();
  EXPECT_TRUE(Memory().erased.empty());
}

TEST_F(A2FlashTest, AWrongCycleDoesNotSpoilTheCommandAfterIt) {
  Cycles({erase[0], erase[1]});
  EraseSector1();
  EXPECT_EQ(Memory().erased.size(), 1U);
}

TEST_F(A2FlashTest, TheLastSectorIsAsLongAsTheOneBefore) {
  auto cycles = erase;
  for (Bytes& cycle : cycles) cycle[2] = static_cast<uint8_t>(cycle[2] + 0x10);
  Cycles(cycles);
  keyboard->PassTime(milliseconds(100));
  Poll();
  EXPECT_EQ(Memory().erased, (std::vector<Range>{{0x4000, 0x2000}}));
  EXPECT_EQ(Memory().Size(), 0x6000U);
}

TEST_F(A2FlashTest, AChipThatBeginsAt0x1400TakesItsAbsoluteCycles) {
  Plug({.sectors = {0x1400, 0x2400, 0x3400}, .eraseTime = milliseconds(0)});
  Cycles({{0x02, 0x55, 0x05, 0, 0, 0xAA, 0},
          {0x02, 0xAA, 0x02, 0, 0, 0x55, 0},
          {0x02, 0x55, 0x05, 0, 0, 0x80, 0},
          {0x02, 0x55, 0x05, 0, 0, 0xAA, 0},
          {0x02, 0xAA, 0x02, 0, 0, 0x55, 0},
          {0x02, 0x00, 0x24, 0, 0, 0x30, 0}});
  host->Ask({0x03, 0x00, 0x24, 0, 0});
  EXPECT_EQ(Memory().erased, (std::vector<Range>{{0x2000, 0x2000}}));
}

TEST_F(A2FlashTest, AChipThatBeginsAt0x1400TakesNoCyclesCountedFromTheSector) {
  Plug({.sectors = {0x1400, 0x2400, 0x3400}, .eraseTime = milliseconds(0)});
  Cycles({{0x02, 0x55, 0x29, 0, 0, 0xAA, 0},
          {0x02, 0xAA, 0x26, 0, 0, 0x55, 0},
          {0x02, 0x55, 0x29, 0, 0, 0x80, 0},
          {0x02, 0x55, 0x29, 0, 0, 0xAA, 0},
          {0x02, 0xAA, 0x26, 0, 0, 0x55, 0},
          {0x02, 0x00, 0x24, 0, 0, 0x30, 0}});
  host->Ask({0x03, 0x00, 0x24, 0, 0});
  EXPECT_TRUE(Memory().erased.empty());
}

TEST_F(A2FlashTest, ABusyChipDoesNotListen) {
  Cycles(erase);
  keyboard->PassTime(milliseconds(99));
  Cycles(erase);
  keyboard->PassTime(milliseconds(1));
  EXPECT_EQ(Poll(), 0xFFFFu);
  EXPECT_EQ(Memory().erased.size(), 1U);
}

TEST_F(A2FlashTest, ABlockAfterTheWordProgramCommandIsWritten) {
  EraseSector1();
  EXPECT_EQ(host->Ask(program), program);
  EXPECT_EQ(host->Ask(header), header);
  EXPECT_EQ(host->Ask(data), (Bytes{0xF4, 0xD4}));
  EXPECT_EQ(Memory().programmed, (std::vector<Range>{{0x2000, 4}}));
  EXPECT_EQ(Memory().Contents()[0x2002], 3);
  EXPECT_EQ(Poll(), 0x0201U);
}

TEST_F(A2FlashTest, ABlockAfterTheWriteBufferCommandsIsWritten) {
  EraseSector1();
  EXPECT_EQ(host->Ask(writeBuffer), writeBuffer);
  EXPECT_EQ(host->Ask(programBuffer), programBuffer);
  host->Ask(header);
  EXPECT_EQ(host->Ask(data), (Bytes{0xF4, 0xD4}));
}

TEST_F(A2FlashTest, BlocksAreRefusedBeforeAValidProgrammingCommand) {
  EraseSector1();
  auto wrong = program;
  wrong[12] = 0xA1;
  auto wrongParameter = writeBuffer;
  wrongParameter[2] = 0x1F;
  const std::vector<std::vector<Bytes>> attempts = {{},
                                                    {wrong},
                                                    {writeBuffer},
                                                    {programBuffer},
                                                    {wrongParameter, programBuffer},
                                                    {program, programBuffer},
                                                    {writeBuffer, program, programBuffer},
                                                    {program, erase[0]}};
  for (const auto& attempt : attempts) {
    Cycles(attempt);
    EXPECT_EQ(host->Ask(header), header);
    EXPECT_EQ(host->Ask(data), kRefusal);
  }
  EXPECT_TRUE(Memory().programmed.empty());
}

TEST_F(A2FlashTest, TheProgramBufferCommandMayComeAgain) {
  EraseSector1();
  Cycles({writeBuffer, writeBuffer, programBuffer, programBuffer, header});
  EXPECT_EQ(host->Ask(data), (Bytes{0xF4, 0xD4}));
}

TEST_F(A2FlashTest, APollOfAnotherSectorNeverReadsAsErased) {
  Cycles(erase);
  keyboard->PassTime(milliseconds(100));
  for (const Bytes& elsewhere :
       {Bytes{0x03, 0xFF, 0x0F, 0, 0}, Bytes{0x03, 0x00, 0x20, 0, 0}, Bytes{0x03, 0, 0x30, 0, 0}}) {
    const Bytes first = host->Ask(elsewhere);
    const Bytes second = host->Ask(elsewhere);
    EXPECT_NE(first, second);
    EXPECT_NE(first[5], 0xFF);
    EXPECT_NE(second[5], 0xFF);
  }
  EXPECT_EQ(host->Ask({0x03, 0xFF, 0x1F, 0, 0})[5], 0xFF);  // its last word
  EXPECT_EQ(Poll(), 0xFFFFU);
}

TEST_F(A2FlashTest, AHostThatStartsAfreshCanReadEveryWord) {
  EXPECT_EQ(host->Ask({0x03, 0, 0, 0, 0})[5], 0xFF);
  EraseSector1();
  EXPECT_NE(host->Ask({0x03, 0, 0, 0, 0})[5], 0xFF);
  host->Ask(kModeA2);
  EXPECT_EQ(host->Ask({0x03, 0, 0, 0, 0})[5], 0xFF);
}

TEST_F(A2FlashTest, AChipMayReadAnotherWordWhenErased) {
  Plug({.sectors = {0x0000, 0x1000, 0x2000}, .eraseTime = milliseconds(100), .erasedWord = 0x1234});
  Cycles(erase);
  EXPECT_NE(Poll(), 0x1234U);
  keyboard->PassTime(milliseconds(100));
  EXPECT_EQ(Poll(), 0x1234U);
  Cycles({program, header});
  EXPECT_EQ(host->Ask(data), (Bytes{0xF4, 0xD4}));
  EXPECT_EQ(Memory().Contents()[0x2001], 2);
}

TEST_F(A2FlashTest, ABusyChipTakesNoBlocks) {
  Cycles(erase);
  Cycles({program});
  keyboard->PassTime(milliseconds(100));
  host->Ask(header);
  EXPECT_EQ(host->Ask(data), kRefusal);
}

TEST_F(A2FlashTest, WordsThatWereNotErasedAreNotWrittenRight) {
  EraseSector1();
  Cycles({program, header});
  EXPECT_EQ(host->Ask(data), (Bytes{0xF4, 0xD4}));
  // The word 0x0002 over 0x0201: bit 1 cannot be set.
  host->Ask({0x07, 0x00, 0x10, 0, 0, 1, 0, 0x02, 0x00, 0, 0, 0});
  EXPECT_EQ(host->Ask({0x02, 0x00}), (Bytes{0xF4, 0xF0}));
  EXPECT_EQ(Poll(), 0x0000U);
}

TEST_F(A2FlashTest, TheSumOfABlockIsOfWords) {
  EraseSector1();
  Cycles({program});
  host->Ask({0x07, 0x00, 0x10, 0, 0, 2, 0, 10, 0, 0, 0, 0});
  EXPECT_EQ(host->Ask(data), kRefusal);
}

TEST_F(A2FlashTest, ALengthOfZeroMeans65536Words) {
  Plug({.sectors = {0, 0x10000}, .eraseTime = milliseconds(0)});
  Cycles({program});
  host->Ask({0x07, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
  EXPECT_EQ(host->Ask(Bytes(131072, 0)), (Bytes{0xF4, 0xD4}));
}

TEST_F(A2FlashTest, BlocksAndSumsEndWithTheChip) {
  EXPECT_EQ(host->Ask({0x07, 0xFF, 0x2F, 0, 0, 1, 0, 0, 0, 0, 0, 0}).size(), 12U);
  EXPECT_EQ(host->Ask({0x07, 0xFF, 0x2F, 0, 0, 2, 0, 0, 0, 0, 0, 0}), kRefusal);
  EXPECT_EQ(host->Ask({0x08, 0xFF, 0x2F, 0, 0, 1, 0, 0, 0, 0}),
            (Bytes{0x08, 0xFF, 0x2F, 0, 0, 1, 0, 0, 0, 0xFF, 0xFF}));
  EXPECT_EQ(host->Ask({0x08, 0xFF, 0x2F, 0, 0, 2, 0, 0, 0, 0}), kRefusal);
}

TEST_F(A2FlashTest, VerifySumsWords) {
  // Two words 0xFFFF: 0x1FFFE.
  EXPECT_EQ(host->Ask({0x08, 0, 0, 0, 0, 2, 0, 0, 0, 0}),
            (Bytes{0x08, 0, 0, 0, 0, 2, 0, 0, 0, 0xFE, 0xFF}));
}

TEST_F(A2FlashTest, MalformedCommandsAreRefused) {
  for (const Bytes& command :
       {Bytes{0x02, 0, 0, 0, 0, 0}, Bytes{0x03, 0, 0, 0}, Bytes{0x04}, Bytes{0x04, 4, 0, 0, 0, 0},
        Bytes{0x04, 2, 0, 0, 0}, Bytes{0x05, 0, 0, 0, 0, 0}, Bytes{0x06, 0, 0}}) {
    EXPECT_EQ(host->Ask(command), kRefusal);
  }
}

TEST_F(A2FlashTest, HundredsOfCyclesAreCountedInOneByteAndEchoedWhole) {
  Bytes many(2 + 4 * 129, 0);
  many[0] = 0x04;
  many[1] = 2;  // 258, low 8 bits
  Deliveries deliveries;
  for (const Bytes& report : HostReports(many))
    ASSERT_TRUE(keyboard->TakeReport(report, deliveries));
  EXPECT_EQ(deliveries.size(), 10U);
  EXPECT_EQ(deliveries[9].report[10], 0x00);
  EXPECT_EQ(deliveries[0].report[9], 0x04);
}

TEST_F(A2FlashTest, PullingThePlugInAnEraseLeavesZeros) {
  Cycles(erase);
  keyboard->Unplug();
  keyboard->PassTime(milliseconds(100));
  keyboard->Replug();
  host->Ask(kModeA2);
  EXPECT_EQ(Poll(), 0x0000U);
}

TEST_F(A2FlashTest, TheModeCommandDoesNotStopAnErase) {
  Cycles(erase);
  host->Ask(kModeA2);
  keyboard->PassTime(milliseconds(100));
  EXPECT_EQ(Poll(), 0xFFFFu);
  EXPECT_EQ(Memory().erased.size(), 1U);
}

TEST(VirtualClockTest, TimeIsWhatItWasToldOrThatAndRealTime) {
  VirtualClock told(false);
  told.Pass(milliseconds(3));
  EXPECT_EQ(told.Now(), milliseconds(3));
  VirtualClock real(true);
  real.Pass(std::chrono::hours(1));
  EXPECT_GE(real.Now(), std::chrono::hours(1));
  const auto before = real.Now();
  const auto start = std::chrono::steady_clock::now();
  while (std::chrono::steady_clock::now() == start) {
  }
  EXPECT_GT(real.Now(), before);
}

}  // namespace
}  // namespace hollin::simulator
