// SPDX-License-Identifier: MIT
#include "simulator/uhid.h"

#include <fcntl.h>
#include <linux/input.h>
#include <linux/uhid.h>
#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace hollin::simulator {
namespace {

uhid_event CreateEvent(const Uhid::Settings& settings) {
  uhid_event event{};
  event.type = UHID_CREATE2;
  uhid_create2_req& device = event.u.create2;
  std::strcpy(reinterpret_cast<char*>(device.name), "Varnholt TS30 (simulated)");
  device.bus = BUS_USB;
  device.vendor = settings.vendorId;
  device.product = settings.productId;
  const Bytes descriptor = ReportDescriptorBytes(settings.descriptor);
  device.rd_size = static_cast<uint16_t>(descriptor.size());
  std::ranges::copy(descriptor, device.rd_data);
  return event;
}

// The kernel keeps 32 reports and drops what comes on top, without holding up whoever writes: this
// process has to run as soon as there is one. Without the right to that it may still be quick
// enough.
void RunBeforeOthers() {
  const sched_param lowest{.sched_priority = sched_get_priority_min(SCHED_FIFO)};
  static_cast<void>(sched_setscheduler(0, SCHED_FIFO, &lowest));
}

}  // namespace

bool Uhid::Plug(std::string& problem) {
  problem = "cannot open " + settings.node + " (it takes root and the module uhid)";
  file = open(settings.node.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
  if (file < 0) return false;
  RunBeforeOthers();
  problem = "the kernel refuses the device";
  return WriteEvent(CreateEvent(settings));
}

// The device lives as long as the file is open.
void Uhid::Unplug() {
  if (file >= 0) close(file);
  file = -1;
}

std::optional<Bytes> Uhid::Read() {
  uhid_event event{};
  if (read(file, &event, sizeof event) <= 0) return std::nullopt;
  Refuse(event);
  if (event.type != UHID_OUTPUT) return std::nullopt;
  const uint16_t size = std::min<uint16_t>(event.u.output.size, UHID_DATA_MAX);
  return Bytes(event.u.output.data, event.u.output.data + size);
}

// The keyboard has no other reports; a program that asks for them would wait without an answer.
void Uhid::Refuse(const uhid_event& question) const {
  uhid_event answer{};
  if (question.type == UHID_GET_REPORT) {
    answer.type = UHID_GET_REPORT_REPLY;
    answer.u.get_report_reply.id = question.u.get_report.id;
    answer.u.get_report_reply.err = EIO;
  } else if (question.type == UHID_SET_REPORT) {
    answer.type = UHID_SET_REPORT_REPLY;
    answer.u.set_report_reply.id = question.u.set_report.id;
    answer.u.set_report_reply.err = EIO;
  } else {
    return;
  }
  static_cast<void>(WriteEvent(answer));
}

bool Uhid::Write(ByteView report) {
  uhid_event event{};
  event.type = UHID_INPUT2;
  event.u.input2.size = static_cast<uint16_t>(report.size());
  std::ranges::copy(report, event.u.input2.data);
  return WriteEvent(event) || errno != EAGAIN;
}

bool Uhid::WriteEvent(const uhid_event& event) const {
  return write(file, &event, sizeof event) == static_cast<ssize_t>(sizeof event);
}

}  // namespace hollin::simulator
