// SPDX-License-Identifier: MIT
#include "simulator/report_descriptor.h"

namespace hollin::simulator {
namespace {

// Usage page 0xFF00 of the vendor, usage 1, an application's collection.
const Bytes kBegin{0x06, 0x00, 0xFF, 0x09, 0x01, 0xA1, 0x01};

// 64 values from 0 to 255 of 8 bits, usage 1, as input and as output.
const Bytes kReports{0x15, 0x00, 0x26, 0xFF, 0x00, 0x75, 0x08, 0x95, 0x40,
                     0x09, 0x01, 0x81, 0x02, 0x09, 0x01, 0x91, 0x02};

const Bytes kNestedCollection{0x09, 0x02, 0xA1, 0x02};  // usage 2, a logical collection
const Bytes kNextCollection{0x06, 0x00, 0xFF, 0x09, 0x02, 0xA1, 0x01};
const Bytes kEnd{0xC0};

Bytes Joined(std::initializer_list<Bytes> parts) {
  Bytes all;
  for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

}  // namespace

std::optional<ReportDescriptor> ParseReportDescriptor(std::string_view name) {
  if (name == "flat") return ReportDescriptor::kFlat;
  if (name == "collections") return ReportDescriptor::kCollections;
  if (name == "nested") return ReportDescriptor::kNested;
  return std::nullopt;
}

Bytes ReportDescriptorBytes(ReportDescriptor descriptor) {
  switch (descriptor) {
    case ReportDescriptor::kCollections:
      return Joined({kBegin, kReports, kEnd, kNextCollection, kEnd});
    case ReportDescriptor::kNested:
      return Joined({kBegin, kNestedCollection, kReports, kEnd, kEnd});
    case ReportDescriptor::kFlat:
      break;
  }
  return Joined({kBegin, kReports, kEnd});
}

}  // namespace hollin::simulator
