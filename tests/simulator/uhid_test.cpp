// SPDX-License-Identifier: MIT
#include "simulator/uhid.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/input.h>
#include <linux/uhid.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>

#include "tests/support/temp_folder.h"

namespace hollin::simulator {
namespace {

constexpr uint16_t kLongest = UHID_DATA_MAX;

// A pipe takes the kernel's place: what one side writes, the other reads.
class UhidTest : public testing::Test {
 protected:
  UhidTest() {
    mkfifo(node.c_str(), 0600);
    kernel = open(node.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
  }
  ~UhidTest() override { close(kernel); }

  void Plug() {
    std::string problem;
    ASSERT_TRUE(uhid.Plug(problem)) << problem;
    created = KernelReads();
  }

  std::optional<uhid_event> KernelReads() const {
    uhid_event event{};
    if (read(kernel, &event, sizeof event) != sizeof event) return std::nullopt;
    return event;
  }

  void KernelWrites(const uhid_event& event) const {
    ASSERT_EQ(write(kernel, &event, sizeof event), static_cast<ssize_t>(sizeof event));
  }

  // Whatever size it claims.
  void KernelWritesOutput(uint16_t size) const {
    uhid_event event{};
    event.type = UHID_OUTPUT;
    std::memset(event.u.output.data, 0xA5, UHID_DATA_MAX);
    event.u.output.size = size;
    KernelWrites(event);
  }

  void Fill() const {
    const Bytes nothing(4096);
    while (write(kernel, nothing.data(), nothing.size()) > 0) {
    }
  }

  TempFolder folder;
  std::string node = folder.Path("uhid");
  int kernel = -1;
  Uhid uhid{{0x1C3E, 0x2B91, ReportDescriptor::kFlat, node}};
  std::optional<uhid_event> created;
};

TEST_F(UhidTest, PluggedInItIsAUsbDeviceWithItsIdsAndItsDescriptor) {
  Plug();
  ASSERT_TRUE(created.has_value());
  EXPECT_EQ(created->type, static_cast<uint32_t>(UHID_CREATE2));
  const uhid_create2_req device = created->u.create2;
  EXPECT_EQ(device.bus, BUS_USB);
  EXPECT_EQ(device.vendor, 0x1C3Eu);
  EXPECT_EQ(device.product, 0x2B91u);
  EXPECT_EQ(device.rd_size, 25);
  EXPECT_EQ(device.rd_data[0], 0x06);
  EXPECT_EQ(device.rd_data[24], 0xC0);
  EXPECT_EQ(device.rd_data[25], 0x00);
}

TEST_F(UhidTest, AReportOfTheHostKeepsItsLengthUpToTheLongest) {
  Plug();
  for (uint16_t size : {uint16_t{63}, uint16_t{64}, uint16_t{65}, kLongest}) {
    KernelWritesOutput(size);
    EXPECT_EQ(uhid.Read(), Bytes(size, 0xA5));
  }
  KernelWritesOutput(kLongest + 1);
  EXPECT_EQ(uhid.Read(), Bytes(kLongest, 0xA5));
}

TEST_F(UhidTest, WhereNothingWaitsThereIsNoReport) {
  Plug();
  EXPECT_EQ(uhid.Read(), std::nullopt);
}

TEST_F(UhidTest, WhatIsNoReportIsPassedOver) {
  Plug();
  uhid_event event{};
  event.type = UHID_OPEN;
  KernelWrites(event);
  EXPECT_EQ(uhid.Read(), std::nullopt);
  EXPECT_FALSE(KernelReads().has_value());
}

TEST_F(UhidTest, WhoAsksForAnotherReportIsToldThatThereIsNone) {
  Plug();
  uhid_event event{};
  event.type = UHID_GET_REPORT;
  event.u.get_report.id = 7;
  KernelWrites(event);
  EXPECT_EQ(uhid.Read(), std::nullopt);
  const auto answer = KernelReads();
  ASSERT_TRUE(answer.has_value());
  EXPECT_EQ(answer->type, static_cast<uint32_t>(UHID_GET_REPORT_REPLY));
  const uhid_get_report_reply_req reply = answer->u.get_report_reply;
  EXPECT_EQ(reply.id, 7u);
  EXPECT_EQ(reply.err, EIO);
}

TEST_F(UhidTest, WhoSetsAnotherReportIsToldThatThereIsNone) {
  Plug();
  uhid_event event{};
  event.type = UHID_SET_REPORT;
  event.u.set_report.id = 8;
  KernelWrites(event);
  EXPECT_EQ(uhid.Read(), std::nullopt);
  const auto answer = KernelReads();
  ASSERT_TRUE(answer.has_value());
  EXPECT_EQ(answer->type, static_cast<uint32_t>(UHID_SET_REPORT_REPLY));
  const uhid_set_report_reply_req reply = answer->u.set_report_reply;
  EXPECT_EQ(reply.id, 8u);
  EXPECT_EQ(reply.err, EIO);
}

TEST_F(UhidTest, AReportOfTheKeyboardArrivesWhole) {
  Plug();
  EXPECT_TRUE(uhid.Write(Bytes(64, 0x5A)));
  const auto event = KernelReads();
  ASSERT_TRUE(event.has_value());
  EXPECT_EQ(event->type, static_cast<uint32_t>(UHID_INPUT2));
  const uhid_input2_req input = event->u.input2;
  EXPECT_EQ(input.size, 64);
  EXPECT_EQ(Bytes(input.data, input.data + 64), Bytes(64, 0x5A));
  EXPECT_EQ(input.data[64], 0);
}

TEST_F(UhidTest, AReportThatFindsNoRoomIsTriedAgain) {
  Plug();
  Fill();
  EXPECT_FALSE(uhid.Write(Bytes(64, 0x5A)));
}

TEST_F(UhidTest, UnpluggedItHasNoFile) {
  EXPECT_EQ(uhid.File(), -1);
  Plug();
  EXPECT_GE(uhid.File(), 0);
  uhid.Unplug();
  EXPECT_EQ(uhid.File(), -1);
}

TEST_F(UhidTest, WithoutItsNodeItSaysWhatItTakes) {
  const std::string missing = folder.Path("none");
  Uhid nowhere({0x1C3E, 0x2B91, ReportDescriptor::kFlat, missing});
  std::string problem;
  EXPECT_FALSE(nowhere.Plug(problem));
  EXPECT_EQ(problem, "cannot open " + missing + " (it takes root and the module uhid)");
}

}  // namespace
}  // namespace hollin::simulator
