// SPDX-License-Identifier: MIT
// The longest message that there can be, 2^32 - 1 bytes, to the end: to a hidapi of its own, which
// only looks at each report. Should they not end, it refuses the first that is too many.
#include <gtest/gtest.h>
#include <hidapi.h>
#include <sys/mman.h>

#include <cstddef>
#include <cstdint>
#include <limits>

#include "device/hid_device.h"

struct hid_device_ {};

namespace {

constexpr uint32_t kLength = std::numeric_limits<uint32_t>::max();
constexpr uint32_t kReports = 78090315;       // 78,090,314 of 55 bytes, and one of 25
constexpr uint32_t kLastOffset = 0xFFFFFFE6;  // 25 bytes before the end

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
int hid_read(hid_device* /*device*/, unsigned char* /*data*/, size_t /*length*/) { return -1; }

int hid_write(hid_device* /*device*/, const unsigned char* data, size_t length) {
  const hollin::ByteView report(data, length);
  lastOffset = hollin::ReadU32(report, 5);
  isRight = isRight && length == 64 && data[0] == 0x51 && hollin::ReadU32(report, 1) == kLength &&
            lastOffset == nextOffset;
  nextOffset += 55;
  written++;
  return written > kReports ? -1 : static_cast<int>(length);
}

namespace hollin {
namespace {

TEST(GiantMessageTest, AMessageOfTwoToTheThirtySecondLessOneIsSentWhole) {
  void* const memory =
      mmap(nullptr, kLength, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  ASSERT_NE(memory, MAP_FAILED);
  HidDevice::handle = &device;
  EXPECT_TRUE(HidDevice::SendMessage({static_cast<const uint8_t*>(memory), kLength}));
  HidDevice::handle = nullptr;
  EXPECT_TRUE(isRight);
  EXPECT_EQ(written, kReports);
  EXPECT_EQ(lastOffset, kLastOffset);
  munmap(memory, kLength);
}

}  // namespace
}  // namespace hollin
