// SPDX-License-Identifier: MIT
// A program that is linked with the real hidapi, as hollin is: it does what its arguments say, one
// after another, and prints what came of it. With the stand-in in front it reaches simulators.
#include <hidapi.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

constexpr unsigned short kVendorId = 0x1C3E;
constexpr unsigned short kProductId = 0x2B91;

hid_device* device = nullptr;

void Enumerate(unsigned short vendorId, unsigned short productId) {
  hid_device_info* list = hid_enumerate(vendorId, productId);
  int count = 0;
  for (const hid_device_info* each = list; each != nullptr; each = each->next) count++;
  hid_free_enumeration(list);
  std::printf("%d keyboards\n", count);
}

std::vector<unsigned char> FromHex(std::string_view text) {
  std::vector<unsigned char> bytes;
  for (size_t i = 0; i + 1 < text.size(); i += 2) {
    bytes.push_back(static_cast<unsigned char>(
        std::strtoul(std::string(text.substr(i, 2)).c_str(), nullptr, 16)));
  }
  return bytes;
}

void Write(std::string_view message) {
  std::vector<unsigned char> report = FromHex(message);
  report.resize(64);
  std::printf("wrote %d\n", hid_write(device, report.data(), report.size()));
}

void Read() {
  unsigned char report[64];
  const int count = hid_read(device, report, sizeof report);
  std::printf("read %d:", count);
  for (int i = 9; i < 20 && i < count; i++) std::printf(" %02x", report[i]);
  std::printf("\n");
}

void Interrupted(int /*number*/) {}

void ReadInterrupted() {
  struct sigaction action {};
  action.sa_handler = Interrupted;
  sigaction(SIGALRM, &action, nullptr);
  ualarm(20'000, 20'000);
  Read();
  ualarm(0, 0);
}

void Do(std::string_view what) {
  if (what == "enumerate") Enumerate(kVendorId, kProductId);
  if (what == "enumerate-any") Enumerate(0, 0);
  if (what == "enumerate-other") Enumerate(kVendorId, 0x0001);
  if (what == "open") {
    device = hid_open(kVendorId, kProductId, nullptr);
    std::printf(device != nullptr ? "opened\n" : "not opened\n");
  }
  if (what == "open-any")
    std::printf(hid_open(0, 0, nullptr) != nullptr ? "opened\n" : "not opened\n");
  if (what.starts_with("write:")) Write(what.substr(6));
  if (what == "read") Read();
  if (what == "read-interrupted") ReadInterrupted();
  if (what == "pause") std::this_thread::sleep_for(std::chrono::milliseconds(500));
  if (what == "short-pause") std::this_thread::sleep_for(std::chrono::microseconds(999));
  if (what == "usleep") usleep(20'000);
  if (what == "clock-pause") {
    const timespec length{2, 0};
    clock_nanosleep(CLOCK_MONOTONIC, 0, &length, nullptr);
  }
  if (what == "hour-of-sleep") std::this_thread::sleep_for(std::chrono::hours(1));
  if (what == "hour-of-clock-pause") {
    const timespec length{3600, 0};
    clock_nanosleep(CLOCK_MONOTONIC, 0, &length, nullptr);
  }
  if (what == "hour-of-usleep") usleep(3'600'000'000);
  if (what == "close") hid_close(device);
  if (what == "exit") hid_exit();
  // The test answers a line that it was asked for; end of input is an answer too.
  if (what == "wait") std::getchar();
}

}  // namespace

int main(int argc, char** argv) {
  for (int i = 1; i < argc; i++) {
    Do(argv[i]);
    std::fflush(stdout);
  }
  return 0;
}
