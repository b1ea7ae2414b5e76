// SPDX-License-Identifier: MIT
// The keyboard as a USB device: a gadget that the kernel's configuration file system describes, on
// one of the machine's USB device controllers. It is found on the other side of that controller's
// cable; with the controller "dummy_hcd", on the same machine. Needs root and the module
// libcomposite. The gadget's description goes with the object; one that a killed process left is
// recognised by its folder, which nobody holds locked.
#pragma once

#include "simulator/kernel_port.h"
#include "simulator/report_descriptor.h"

namespace hollin::simulator {

class UsbGadget : public KernelPort {
 public:
  struct Settings {
    uint16_t vendorId = 0;
    uint16_t productId = 0;
    ReportDescriptor descriptor = ReportDescriptor::kFlat;
    bool secondInterface = false;  // one more, of the same form, that nobody serves
    std::string controller{};  // its name among the controllers; empty for the first that is free
    std::string gadgets = "/sys/kernel/config/usb_gadget";
    std::string controllers = "/sys/class/udc";
  };

  explicit UsbGadget(Settings settings);
  ~UsbGadget() override;

  [[nodiscard]] bool Plug(std::string& problem) override;
  void Unplug() override;
  [[nodiscard]] int File() const override { return file; }
  [[nodiscard]] std::optional<Bytes> Read() override;
  [[nodiscard]] bool Write(ByteView report) override;

 private:
  [[nodiscard]] bool Claim();
  void RemoveOrphans() const;
  [[nodiscard]] bool Describe() const;
  [[nodiscard]] bool DescribeFunction(const std::string& name) const;
  [[nodiscard]] bool Bind();
  [[nodiscard]] bool OpenNode();

  Settings settings;
  std::string folder;      // of this gadget's description
  std::string controller;  // in use; empty until then
  int claim = -1;          // the folder, opened and locked
  bool described = false;
  bool bound = false;
  int file = -1;
};

}  // namespace hollin::simulator
