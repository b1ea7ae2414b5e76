// SPDX-License-Identifier: MIT
#include "cli/keyboard_report.h"

#include <algorithm>

namespace hollin {
namespace {

const HidrawNode* NodeOf(const ListedKeyboard& keyboard, const std::vector<HidrawNode>& nodes) {
  const auto found = std::find_if(nodes.begin(), nodes.end(), [&](const HidrawNode& node) {
    return node.path == keyboard.path;
  });
  return found == nodes.end() ? nullptr : &*found;
}

// Where the kernel knows the USB devices, they decide: makers give one serial number to many.
bool IsSame(const ListedKeyboard& a, const ListedKeyboard& b,
            const std::vector<HidrawNode>& nodes) {
  if (a.path == b.path) return true;
  const HidrawNode* const nodeA = NodeOf(a, nodes);
  const HidrawNode* const nodeB = NodeOf(b, nodes);
  const bool areKnown = nodeA != nullptr && nodeB != nullptr && !nodeA->usbDevice.empty() &&
                        !nodeB->usbDevice.empty();
  if (areKnown) return nodeA->usbDevice == nodeB->usbDevice;
  return !a.serial.empty() && a.serial == b.serial;
}

}  // namespace

std::vector<ReportedKeyboard> ReportKeyboards(const Surroundings& surroundings,
                                              const std::vector<HidrawNode>& nodes) {
  std::vector<ReportedKeyboard> keyboards;
  for (const ListedKeyboard& listed : surroundings.listed) {
    ReportedKeyboard keyboard{.listed = listed, .mayOpen = surroundings.mayOpen(listed.path)};
    if (const HidrawNode* const node = NodeOf(listed, nodes)) keyboard.users = node->users;
    for (size_t i = 0; i < keyboards.size() && !keyboard.sameAs; i++) {
      if (IsSame(keyboards[i].listed, listed, nodes)) keyboard.sameAs = i;
    }
    keyboards.push_back(std::move(keyboard));
  }
  return keyboards;
}

}  // namespace hollin
