// SPDX-License-Identifier: MIT
// The keyboard as a HID device without a bus, through /dev/uhid: many desktops' kernels have that
// and no USB device controller. Needs the right to open /dev/uhid (root's, usually) and the module
// uhid. The device goes with the object. Unlike a wire, it loses reports that come faster than this
// process takes them.
#pragma once

#include <string>
#include <utility>

#include "simulator/kernel_port.h"
#include "simulator/report_descriptor.h"

struct uhid_event;

namespace hollin::simulator {

class Uhid : public KernelPort {
 public:
  struct Settings {
    uint16_t vendorId = 0;
    uint16_t productId = 0;
    ReportDescriptor descriptor = ReportDescriptor::kFlat;
    std::string node = "/dev/uhid";
  };

  explicit Uhid(Settings settings) : settings(std::move(settings)) {}
  ~Uhid() override { Unplug(); }

  [[nodiscard]] bool Plug(std::string& problem) override;
  void Unplug() override;
  [[nodiscard]] int File() const override { return file; }
  [[nodiscard]] std::optional<Bytes> Read() override;
  [[nodiscard]] bool Write(ByteView report) override;

 private:
  [[nodiscard]] bool WriteEvent(const uhid_event& event) const;
  void Refuse(const uhid_event& question) const;

  Settings settings;
  int file = -1;
};

}  // namespace hollin::simulator
