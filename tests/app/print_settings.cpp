// SPDX-License-Identifier: MIT
// Prints what a program that lies where this one lies takes from its configuration. Tests copy it
// to where they want it. With an argument it removes itself first.
#include <unistd.h>

#include <cstdio>

#include "app/bundle.h"
#include "app/device_settings.h"
#include "app/ini_config.h"

int main(int argc, char** argv) {
  if (argc > 1 && unlink(argv[0]) != 0) return 1;
  const hollin::DeviceSettings settings = hollin::ReadDeviceSettings();
  const bool isShared = &hollin::IniConfig::instance() == &hollin::IniConfig::instance();
  std::printf("%s|%04X|%04X|%s|%d", hollin::BundlePath().c_str(), settings.vendorId,
              settings.productId, settings.caption.c_str(), isShared ? 1 : 0);
  return 0;
}
