// SPDX-License-Identifier: MIT
// The longest message that there can be, 2^32 - 1 bytes, to the end: to a hidapi of its own, which
// only looks at each report. Should they not end, it refuses the first that is too many. The
// message is little more than one mebibyte of memory that is mapped again and again.
#include <gtest/gtest.h>
#include <hidapi.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "device/hid_device.h"

struct hid_device_ {};

namespace {

constexpr uint32_t kLength = std::numeric_limits<uint32_t>::max();
constexpr uint32_t kReports = 78090315;       // 78,090,314 of 55 bytes, and one of 25
constexpr uint32_t kLastOffset = 0xFFFFFFE6;  // 25 bytes before the end

// Whole pages of 4 KiB, as mapping asks, and no power of two: an offset that lost its upper bits
// then names other bytes.
constexpr size_t kPiece = 0x101000;

// Neighbours of 55 bytes differ: 251 and 55 have nothing in common.
constexpr uint8_t ByteAt(uint64_t place) { return static_cast<uint8_t>(place % kPiece % 251); }

hid_device_ device;
uint32_t written = 0;
uint32_t nextOffset = 0;
uint32_t lastOffset = 0;
bool isRight = true;

}  // namespace

// What the link calls; a message needs no more than the write.
hid_device_info* hid_enumerate(unsigned short /*vendor*/, unsigned short /*product*/) {
  return nullptr;
}
void hid_free_enumeration(hid_device_info* /*list*/) {}
hid_device* hid_open(unsigned short /*vendor*/, unsigned short /*product*/, const wchar_t*) {
  return nullptr;
}
void hid_close(hid_device* /*device*/) {}
int hid_exit() { return 0; }
const wchar_t* hid_error(hid_device* /*device*/) { return nullptr; }
int hid_read(hid_device* /*device*/, unsigned char* /*data*/, size_t /*length*/) { return -1; }

int hid_write(hid_device* /*device*/, const unsigned char* data, size_t length) {
  const hollin::ByteView report(data, length);
  lastOffset = hollin::ReadU32(report, 5);
  const uint64_t last = std::min<uint64_t>(uint64_t{lastOffset} + 55, kLength) - 1;
  isRight = isRight && length == 64 && data[0] == 0x51 && hollin::ReadU32(report, 1) == kLength &&
            lastOffset == nextOffset && data[9] == ByteAt(lastOffset) &&
            data[9 + last - lastOffset] == ByteAt(last);
  nextOffset += 55;
  written++;
  return written > kReports ? -1 : static_cast<int>(length);
}

namespace hollin {
namespace {

class GiantMessageTest : public ::testing::Test {
 protected:
  static constexpr size_t kMapped = (kLength / kPiece + 1) * kPiece;

  void SetUp() override {
    Bytes piece(kPiece);
    for (size_t place = 0; place < kPiece; place++) piece[place] = ByteAt(place);
    const int file = memfd_create("piece", MFD_CLOEXEC);
    ASSERT_GE(file, 0);
    ASSERT_EQ(write(file, piece.data(), kPiece), ssize_t{kPiece});
    void* const reserved = mmap(nullptr, kMapped, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(reserved, MAP_FAILED);
    message = static_cast<uint8_t*>(reserved);
    for (size_t place = 0; place < kMapped; place += kPiece) {
      ASSERT_NE(mmap(message + place, kPiece, PROT_READ, MAP_SHARED | MAP_FIXED, file, 0),
                MAP_FAILED);
    }
    close(file);
    HidDevice::handle = &device;
  }

  void TearDown() override {
    HidDevice::handle = nullptr;
    if (message != nullptr) munmap(message, kMapped);
  }

  uint8_t* message = nullptr;
};

TEST_F(GiantMessageTest, AMessageOfTwoToTheThirtySecondLessOneIsSentWhole) {
  EXPECT_TRUE(HidDevice::SendMessage({message, kLength}));
  EXPECT_TRUE(isRight);
  EXPECT_EQ(written, kReports);
  EXPECT_EQ(lastOffset, kLastOffset);
}

}  // namespace
}  // namespace hollin
