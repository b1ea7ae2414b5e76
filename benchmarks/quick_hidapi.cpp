// SPDX-License-Identifier: MIT
// A hidapi that costs next to nothing: one keyboard is there, takes every report, and answers each
// command at once as a good one would. Every sum it tells is 0, so images of zeros are verified.
// As a shared library it serves whole programs; then, if QUICK_FRAME_NS is set, every report takes
// the frame that follows, and frames come in that rhythm. At the end of the link the file that
// QUICK_WAITED names gets what the scheduler tells of the thread: nanoseconds that it ran, and that
// it waited for a processor.
#include <fcntl.h>
#include <hidapi.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <initializer_list>

struct hid_device_ {};

namespace {

constexpr uint8_t kHeader = 9;  // bytes before the payload of a report

hid_device_info theInfo{};
hid_device_ theDevice;
const unsigned char* lastReport = nullptr;  // only looked at: the sender may time its writes
bool isAnswered = true;
bool awaitsData = false;  // of a block
int64_t frameLength = 0;  // nanoseconds, 0 for no frames

int64_t Now() {
  timespec time = {};
  clock_gettime(CLOCK_MONOTONIC, &time);
  return int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

// Looks at the clock all the time: on a virtual machine, waking up takes a part of a millisecond,
// which can be the next frame already.
void AwaitFrame() {
  const int64_t end = (Now() / frameLength + 1) * frameLength;
  while (Now() < end) continue;
}

void TellWaited(const char* path) {
  char text[64];
  const int from = open("/proc/thread-self/schedstat", O_RDONLY | O_CLOEXEC);
  const int to = open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  const ssize_t length = read(from, text, sizeof text);
  if (length <= 0 || write(to, text, static_cast<size_t>(length)) != length) std::abort();
  close(from);
  close(to);
}

// The report buffer may be the one that was sent: what is in the payload stays there, and counts as
// the echo.
int Reply(unsigned char* report, uint8_t total) {
  std::fill(report + 1, report + kHeader, uint8_t{0});
  report[5] = total;
  return 64;
}

int ReplyWith(unsigned char* report, uint8_t byte) {
  report[kHeader] = byte;
  return Reply(report, 1);
}

int ReplyWithEcho(unsigned char* report, uint8_t total, std::initializer_list<uint8_t> tail) {
  std::copy(tail.begin(), tail.end(), report + kHeader + total - tail.size());
  return Reply(report, total);
}

}  // namespace

hid_device_info* hid_enumerate(unsigned short /*vendorId*/, unsigned short /*productId*/) {
  return &theInfo;
}
void hid_free_enumeration(hid_device_info* /*list*/) {}
hid_device* hid_open(unsigned short /*vendorId*/, unsigned short /*productId*/,
                     const wchar_t* /*serial*/) {
  const char* const frame = std::getenv("QUICK_FRAME_NS");
  if (frame != nullptr) frameLength = std::atoll(frame);
  return &theDevice;
}
int hid_write(hid_device* /*device*/, const unsigned char* data, size_t length) {
  if (frameLength != 0) AwaitFrame();
  lastReport = data;
  isAnswered = false;
  return static_cast<int>(length);
}
int hid_read(hid_device* /*device*/, unsigned char* data, size_t /*length*/) {
  if (frameLength != 0) AwaitFrame();
  if (isAnswered) return ReplyWith(data, 0xD4);  // the second of a block's two status bytes
  isAnswered = true;
  if (awaitsData) {
    awaitsData = false;
    return ReplyWith(data, 0xF4);
  }
  if (data != lastReport) std::copy(lastReport, lastReport + 64, data);
  switch (data[kHeader]) {
    case 0x01:
      return ReplyWith(data, 0xF1);
    case 0x03:
      return ReplyWithEcho(data, 7, {0xFF, 0xFF});
    case 0x08:
      return ReplyWithEcho(data, 11, {0, 0});
    case 0x0B:
      return ReplyWithEcho(data, 5, {0xF1, 0xFF, 0xFF, 0xFF, 0x7F});  // a capacity of 2^31 - 1
    case 0x07:
      awaitsData = true;
      [[fallthrough]];
    default:
      return Reply(data, data[1]);  // as long as what was sent
  }
}
void hid_close(hid_device* /*device*/) {
  const char* const path = std::getenv("QUICK_WAITED");
  if (path != nullptr) TellWaited(path);
}
int hid_exit() { return 0; }
const wchar_t* hid_error(hid_device* /*device*/) { return L"Success"; }
