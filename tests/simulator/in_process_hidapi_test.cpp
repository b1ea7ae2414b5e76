// SPDX-License-Identifier: MIT
#include "simulator/in_process_hidapi.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hidapi.h>

#include <array>
#include <chrono>

namespace hollin::simulator {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

constexpr unsigned short kVendorId = 0x1C3E;
constexpr unsigned short kProductId = 0x2B91;

class InProcessHidapiTest : public testing::Test {
 protected:
  ~InProcessHidapiTest() override { hidapi.Reset(); }

  static int Count(unsigned short vendorId, unsigned short productId) {
    hid_device_info* list = hid_enumerate(vendorId, productId);
    int count = 0;
    for (const auto* each = list; each != nullptr; each = each->next) count++;
    hid_free_enumeration(list);
    return count;
  }
  static int WriteMode(hid_device* device) {
    std::array<unsigned char, 64> report{0x51, 4, 0, 0, 0, 0, 0, 0, 0, 0x01, 0x0A, 0x4D, 0x02};
    return hid_write(device, report.data(), report.size());
  }

  InProcessHidapi& hidapi = InProcessHidapi::Instance();
  std::array<unsigned char, 64> report{};
};

TEST_F(InProcessHidapiTest, EnumeratingTakesZeroForAnyIdAndOpensNothing) {
  hidapi.Attach();
  hidapi.Attach({.vendorId = 7});
  EXPECT_EQ(Count(0, 0), 2);
  EXPECT_EQ(Count(0, kProductId), 2);
  EXPECT_EQ(Count(kVendorId, 0), 1);
  EXPECT_EQ(Count(kVendorId, kProductId), 1);
  EXPECT_EQ(Count(kVendorId, 1), 0);
  EXPECT_EQ(hidapi.opens, 0U);
  EXPECT_EQ(hidapi.enumerations, 5U);
}

TEST_F(InProcessHidapiTest, AnEntryDescribesItsKeyboard) {
  hidapi.Attach();
  hid_device_info* list = hid_enumerate(0, 0);
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(list->vendor_id, kVendorId);
  EXPECT_EQ(list->product_id, kProductId);
  hid_device* device = hid_open_path(list->path);
  EXPECT_NE(device, nullptr);
  hid_close(device);
  hid_free_enumeration(list);
}

TEST_F(InProcessHidapiTest, FreedListsAreCountedApartFromEnumerations) {
  hidapi.Attach();
  hid_device_info* list = hid_enumerate(0, 0);
  EXPECT_EQ(hidapi.enumerations, 1U);
  EXPECT_EQ(hidapi.freedLists, 0U);
  hid_free_enumeration(list);
  EXPECT_EQ(hidapi.freedLists, 1U);
  hidapi.Reset();
  EXPECT_EQ(hidapi.freedLists, 0U);
}

TEST_F(InProcessHidapiTest, OpeningComparesIdsExactly) {
  hidapi.Attach();
  EXPECT_EQ(hid_open(0, 0, nullptr), nullptr);
  EXPECT_EQ(hid_open(kVendorId, 0, nullptr), nullptr);
  hid_device* device = hid_open(kVendorId, kProductId, nullptr);
  ASSERT_NE(device, nullptr);
  hid_close(device);
  EXPECT_EQ(hidapi.opens, 1U);
  EXPECT_EQ(hidapi.closes, 1U);
  EXPECT_EQ(hidapi.openHandles, 0U);
}

TEST_F(InProcessHidapiTest, EveryCallIsRecordedInOrder) {
  hidapi.Attach();
  EXPECT_EQ(Count(kVendorId, kProductId), 1);
  hid_device* device = hid_open(kVendorId, kProductId, nullptr);
  EXPECT_EQ(WriteMode(device), 64);
  EXPECT_EQ(hid_read(device, report.data(), report.size()), 64);
  hid_close(device);
  hid_exit();
  EXPECT_THAT(hidapi.calls,
              ElementsAre("enumerate 1c3e 2b91 -> 1", "free-enumeration", "open 1c3e 2b91 -> ok",
                          StartsWith("write 51 04 00 00 00 00 00 00 00 01 0a 4d 02 00"),
                          StartsWith("read 51 00 00 00 00 01 00 00 00 f1 00"), "close", "exit"));
  EXPECT_EQ(hidapi.exits, 1U);
}

TEST_F(InProcessHidapiTest, RecordingCanBeTurnedOff) {
  hidapi.recordCalls = false;
  hid_exit();
  EXPECT_TRUE(hidapi.calls.empty());
  EXPECT_EQ(hidapi.exits, 1U);
}

TEST_F(InProcessHidapiTest, AReadThatWouldWaitForEverFailsAndSaysSo) {
  hidapi.Attach();
  hid_device* device = hid_open(kVendorId, kProductId, nullptr);
  EXPECT_EQ(hid_read_timeout(device, report.data(), report.size(), 1000), 0);
  EXPECT_FALSE(hidapi.wouldBlock);
  EXPECT_EQ(hid_read(device, report.data(), report.size()), -1);
  EXPECT_TRUE(hidapi.wouldBlock);
  hid_close(device);
}

TEST_F(InProcessHidapiTest, AfterARemovalQueuedReportsAreReadThenBothDirectionsFail) {
  Keyboard& keyboard = hidapi.Attach();
  hid_device* device = hid_open(kVendorId, kProductId, nullptr);
  WriteMode(device);
  keyboard.Unplug();
  EXPECT_EQ(Count(0, 0), 0);
  EXPECT_EQ(hid_read(device, report.data(), report.size()), 64);
  EXPECT_EQ(hid_read(device, report.data(), report.size()), -1);
  EXPECT_EQ(WriteMode(device), -1);
  EXPECT_FALSE(hidapi.wouldBlock);
  hid_close(device);
}

TEST_F(InProcessHidapiTest, AnOldHandleStaysDeadWhenTheKeyboardIsPluggedInAgain) {
  Keyboard& keyboard = hidapi.Attach();
  hid_device* old = hid_open(kVendorId, kProductId, nullptr);
  keyboard.Unplug();
  keyboard.Replug();
  EXPECT_EQ(WriteMode(old), -1);
  EXPECT_EQ(hid_read(old, report.data(), report.size()), -1);
  hid_device* fresh = hid_open(kVendorId, kProductId, nullptr);
  EXPECT_EQ(WriteMode(fresh), 64);
  hid_close(old);
  hid_close(fresh);
}

TEST_F(InProcessHidapiTest, EveryOpenGetsEveryReportAndANewOneBeginsEmpty) {
  hidapi.Attach();
  hid_device* first = hid_open(kVendorId, kProductId, nullptr);
  hid_device* second = hid_open(kVendorId, kProductId, nullptr);
  WriteMode(first);
  EXPECT_EQ(hid_read(second, report.data(), report.size()), 64);
  EXPECT_EQ(hid_read(first, report.data(), report.size()), 64);
  WriteMode(first);
  hid_close(second);
  second = hid_open(kVendorId, kProductId, nullptr);
  EXPECT_EQ(hid_read(second, report.data(), report.size()), -1);
  EXPECT_TRUE(hidapi.wouldBlock);
  hid_close(first);
  hid_close(second);
}

// The answer stands behind so many reports that nobody asked for.
TEST_F(InProcessHidapiTest, AnOpenKeeps63ReportsAndLosesTheNewest) {
  for (const int64_t unsolicited : {62, 63, 64}) {
    hidapi.Attach({.faults = {{.kind = FaultKind::kUnsolicited, .parameter = unsolicited}}});
    hid_device* device = hid_open(kVendorId, kProductId, nullptr);
    WriteMode(device);
    size_t reports = 0;
    while (hid_read(device, report.data(), report.size()) == 64) reports++;
    EXPECT_EQ(reports, 63U) << unsolicited;
    EXPECT_EQ(report[9] == 0xF1, unsolicited == 62) << unsolicited;
    hid_close(device);
    hidapi.Reset();
  }
}

TEST_F(InProcessHidapiTest, AQueueThatWasFullTakesReportsAgainOnceSomeWereRead) {
  hidapi.Attach({.faults = {{.kind = FaultKind::kUnsolicited, .parameter = 63}}});
  hid_device* device = hid_open(kVendorId, kProductId, nullptr);
  WriteMode(device);
  EXPECT_EQ(hid_read(device, report.data(), report.size()), 64);
  WriteMode(device);
  for (int i = 0; i < 63; i++) EXPECT_EQ(hid_read(device, report.data(), report.size()), 64);
  EXPECT_EQ(report[9], 0xF1);
  hid_close(device);
}

TEST_F(InProcessHidapiTest, ADetachedKeyboardCanStillBeClosed) {
  Keyboard& keyboard = hidapi.Attach();
  hid_device* device = hid_open(kVendorId, kProductId, nullptr);
  hidapi.Detach(keyboard);
  EXPECT_EQ(WriteMode(device), -1);
  hid_close(device);
  EXPECT_EQ(hidapi.openHandles, 0U);
}

TEST_F(InProcessHidapiTest, ARefusedOpenIsNull) {
  hidapi.Attach({.faults = {{.kind = FaultKind::kOpenFails, .moment = FaultMoment::kOpen}}});
  EXPECT_EQ(hid_open(kVendorId, kProductId, nullptr), nullptr);
  EXPECT_THAT(hidapi.calls, ElementsAre("open 1c3e 2b91 -> failed"));
}

TEST_F(InProcessHidapiTest, AFailedReadAndAShortReportReachTheProgram) {
  hidapi.Attach({.faults = {{.kind = FaultKind::kReadFails},
                            {.kind = FaultKind::kShortReport, .parameter = 9}}});
  hid_device* device = hid_open(kVendorId, kProductId, nullptr);
  WriteMode(device);
  EXPECT_EQ(hid_read(device, report.data(), report.size()), -1);
  EXPECT_FALSE(hidapi.wouldBlock);
  EXPECT_EQ(hid_read(device, report.data(), report.size()), 9);
  hid_close(device);
}

TEST_F(InProcessHidapiTest, TimeThatIsToldReachesTheKeyboards) {
  Keyboard& keyboard = hidapi.Attach({.c1 = {.eraseTime = std::chrono::milliseconds(10)}});
  Deliveries deliveries;
  const auto send = [&](Bytes message) {
    Bytes one = {0x51, static_cast<uint8_t>(message.size()), 0, 0, 0, 0, 0, 0, 0};
    one.insert(one.end(), message.begin(), message.end());
    one.resize(64);
    EXPECT_TRUE(keyboard.TakeReport(one, deliveries));
    return deliveries.back().report[14];
  };
  send({0x01, 0x0A, 0x4D, 0x03});
  send({0x0B, 0, 0, 1, 0x00, 0x10, 0x00});
  send({0x02, 0, 0, 0, 0});
  EXPECT_EQ(send({0x03, 0, 0, 0, 0}), 0x00);
  hidapi.PassTime(std::chrono::milliseconds(10));
  EXPECT_EQ(send({0x03, 0, 0, 0, 0}), 0xFF);
}

TEST_F(InProcessHidapiTest, TheRestOfTheInterfaceAnswers) {
  hidapi.Attach();
  hid_device* device = hid_open(kVendorId, kProductId, nullptr);
  wchar_t text[8];
  EXPECT_EQ(hid_get_product_string(device, text, 5), 0);
  EXPECT_STREQ(text, L"TS30");
  EXPECT_EQ(hid_get_manufacturer_string(device, text, 8), 0);
  EXPECT_EQ(hid_get_serial_number_string(device, text, 8), 0);
  EXPECT_EQ(hid_get_indexed_string(device, 1, text, 8), -1);
  EXPECT_EQ(hid_get_device_info(device)->vendor_id, kVendorId);
  EXPECT_EQ(hid_send_feature_report(device, report.data(), 1), -1);
  EXPECT_EQ(hid_get_feature_report(device, report.data(), 1), -1);
  EXPECT_EQ(hid_get_input_report(device, report.data(), 1), -1);
  EXPECT_EQ(hid_set_nonblocking(device, 1), 0);
  EXPECT_EQ(hid_read(device, report.data(), report.size()), 0);
  EXPECT_NE(hid_error(device), nullptr);
  EXPECT_EQ(hid_version()->minor, HID_API_VERSION_MINOR);
  EXPECT_STREQ(hid_version_str(), HID_API_VERSION_STR);
  EXPECT_EQ(hid_init(), 0);
  hid_close(device);
}

TEST_F(InProcessHidapiTest, WhoWatchesIsToldOfReportsAndOfReadsThatWouldBlock) {
  Keyboard& keyboard = hidapi.Attach();
  size_t reports = 0;
  hidapi.beforeWrite = [&](std::span<const uint8_t> written) { reports += written.size() == 64; };
  hidapi.onBlock = [&] { keyboard.Unplug(); };
  hid_device* device = hid_open(kVendorId, kProductId, nullptr);
  EXPECT_EQ(WriteMode(device), 64);
  EXPECT_EQ(reports, 1U);
  EXPECT_EQ(hid_read(device, report.data(), report.size()), 64);
  EXPECT_TRUE(keyboard.Attached());
  EXPECT_EQ(hid_read(device, report.data(), report.size()), -1);
  EXPECT_FALSE(keyboard.Attached());
  hid_close(device);
}

}  // namespace
}  // namespace hollin::simulator
