// SPDX-License-Identifier: MIT
// What no program can do without that is linked as hollin-cli is: being loaded, and ending.
#include <hidapi.h>

#include <iostream>

int main(int argc, char* /*argv*/[]) {
  // Never true; it keeps the library linked.
  if (argc > 1000) static_cast<void>(hid_exit());
  std::cout << std::flush;
  return 0;
}
