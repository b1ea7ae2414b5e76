// SPDX-License-Identifier: MIT
// The reference itself, held against reports that were written down by hand.
#include "tests/campaign/reference_host.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>

#include "tests/support/hex_bytes.h"

namespace hollin::campaign {
namespace {

using std::chrono::milliseconds;

// Answers with prepared reports, whatever it is asked.
class ScriptedLink : public ReferenceLink {
 public:
  bool Open() override { return true; }
  void Close() override {}
  bool Write(ByteView report) override {
    written.emplace_back(report.begin(), report.end());
    return true;
  }
  int Read(std::span<uint8_t> report) override {
    if (answers.empty()) return -1;
    const Bytes answer = std::move(answers.front());
    answers.pop_front();
    std::copy(answer.begin(), answer.end(), report.begin());
    return static_cast<int>(answer.size());
  }
  void Pause(milliseconds length) override { pauses.push_back(length); }

  // A reply of one report, with nothing behind its payload.
  void Answer(const Bytes& reply) {
    answers.push_back(Bytes{0, 0, 0, 0, 0, static_cast<uint8_t>(reply.size()), 0, 0, 0} + reply);
  }

  std::deque<Bytes> answers;
  std::vector<Bytes> written;
  std::vector<milliseconds> pauses;
};

// Header and payload, without what is left of earlier reports behind them.
Bytes Head(const Bytes& report) {
  return {report.begin(), report.begin() + 9 + std::min(report[1] - report[5], 55)};
}

TEST(ReferenceHostTest, AnA1UpdateOfOneBlock) {
  ScriptedLink link;
  for (const char* reply : {"F1", "07 00000000 0300 0600 000000", "F4", "D4",
                            "08 10000000 03000000 0600", "09 00 0000"}) {
    link.Answer(Hex(reply));
  }
  EXPECT_TRUE(ReferenceHost(link).Update(
      {ReferenceA1{.mode = 5, .startAddress = 16, .blockLength = 64, .image = Hex("01 02 03")}}));
  ASSERT_EQ(link.written.size(), 5U);
  EXPECT_EQ(Head(link.written[0]), Hex("51 04000000 00000000 01 0A 4D 05"));
  EXPECT_EQ(Head(link.written[1]), Hex("51 0C000000 00000000 07 00000000 0300 0600 000000"));
  EXPECT_EQ(Head(link.written[2]), Hex("51 03000000 00000000 01 02 03"));
  EXPECT_EQ(Head(link.written[3]), Hex("51 0A000000 00000000 08 10000000 03000000 00"));
  EXPECT_EQ(Head(link.written[4]), Hex("51 04000000 00000000 09 00 0000"));
  EXPECT_EQ(link.pauses, std::vector<milliseconds>(3, milliseconds(500)));
}

TEST(ReferenceHostTest, AnA2SectorIsErasedStartedAndSent) {
  ScriptedLink link;
  for (const char* reply :
       {"F1", "02 00010000 3000", "03 00010000 FFFF", "03 00010000 FFFF", "04 02 5505 A000",
        "07 00010000 0100 0201 000000", "F4", "D4", "08 00010000 01000000 0201", "09 00 0000"}) {
    link.Answer(Hex(reply));
  }
  EXPECT_TRUE(ReferenceHost(link).Update({ReferenceA2{.sectors = {0x100, 0x200},
                                                      .erase = {{0x555, 0x30}},
                                                      .program = {{0x555, 0xA0}},
                                                      .image = Hex("02 01")}}));
  ASSERT_EQ(link.written.size(), 9U);
  EXPECT_EQ(Head(link.written[1]), Hex("51 07000000 00000000 02 00010000 3000"));
  EXPECT_EQ(Head(link.written[2]), Hex("51 05000000 00000000 03 00010000"));
  EXPECT_EQ(Head(link.written[4]), Hex("51 06000000 00000000 04 02 5505 A000"));
  EXPECT_EQ(Head(link.written[6]), Hex("51 02000000 00000000 02 01"));
  EXPECT_EQ(link.pauses,
            (std::vector<milliseconds>{milliseconds(500), milliseconds(700), milliseconds(20),
                                       milliseconds(500), milliseconds(500)}));
}

TEST(ReferenceHostTest, AC1UpdateIsConfiguredFirst) {
  ScriptedLink link;
  for (const char* reply :
       {"F1", "F1 00200000", "02 00100000", "03 00100000 FFFF", "07 00100000 02000000 0300 00",
        "F4", "08 00100000 02000000 0300", "09 00 0000"}) {
    link.Answer(Hex(reply));
  }
  EXPECT_TRUE(ReferenceHost(link).Update({ReferenceC1{
      .spi = 1, .lines = 2, .sectorSize = 4096, .reserved = {0}, .image = Hex("01 02")}}));
  ASSERT_EQ(link.written.size(), 8U);
  EXPECT_EQ(Head(link.written[1]), Hex("51 07000000 00000000 0B 01 00 02 001000"));
  EXPECT_EQ(Head(link.written[4]), Hex("51 0C000000 00000000 07 00100000 02000000 0300 00"));
}

TEST(ReferenceHostTest, AFlashThatIsTooSmallEndsTheUpdate) {
  ScriptedLink link;
  for (const char* reply : {"F1", "F1 FF1F0000", "09 01 0000"}) link.Answer(Hex(reply));
  EXPECT_FALSE(ReferenceHost(link).Update(
      {ReferenceC1{.sectorSize = 4096, .reserved = {0}, .image = Hex("01 02")}}));
  EXPECT_EQ(Head(link.written.back()), Hex("51 04000000 00000000 09 01 0000"));
}

TEST(ReferenceHostTest, ARefusedModeIsAskedForFiveTimes) {
  ScriptedLink link;
  for (int i = 0; i < 5; i++) link.Answer(Hex("F0"));
  EXPECT_FALSE(ReferenceHost(link).Update({ReferenceA1{.blockLength = 64, .image = {1}}}));
  EXPECT_EQ(link.written.size(), 6U);
  EXPECT_TRUE(link.pauses.empty());
}

TEST(ReferenceHostTest, OldBytesGoOutBehindAShortPayload) {
  ScriptedLink link;
  link.Answer(Hex("F0 77"));
  EXPECT_FALSE(ReferenceHost(link).Update({ReferenceA1{.blockLength = 64, .image = {1}}}));
  EXPECT_EQ(link.written[1], Hex("51 04000000 00000000 01 0A 4D 02") + Filled(51, 0));
}

}  // namespace
}  // namespace hollin::campaign
