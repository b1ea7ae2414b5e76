// SPDX-License-Identifier: MIT
#include "app/alert_scope.h"

namespace hollin {
namespace {

int alertCount = 0;

}  // namespace

AlertScope::AlertScope() { alertCount++; }

AlertScope::~AlertScope() {
  alertCount--;
  if (alertCount == 0) emit AlertWatch::Instance().AllGone();
}

bool AlertScope::IsAny() { return alertCount > 0; }

// Never destroyed: an alert may still be up while the program leaves.
AlertWatch& AlertWatch::Instance() {
  static auto& watch = *new AlertWatch;
  return watch;
}

}  // namespace hollin
