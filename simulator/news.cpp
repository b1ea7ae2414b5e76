// SPDX-License-Identifier: MIT
#include "simulator/news.h"

#include <cstdio>

namespace hollin::simulator {

void News::Print(const char* line) const {
  if (!wanted) return;
  std::puts(line);
  std::fflush(stdout);
}

void News::Print(const Keyboard& keyboard) {
  if (!wanted) return;
  const KeyboardRecord& record = keyboard.Record();
  for (; commands < record.commands.size(); commands++) {
    std::printf("command");
    for (uint8_t byte : record.commands[commands]) std::printf(" %02x", byte);
    std::printf("\n");
  }
  if (record.blocks != blocks)
    std::printf("block %llu taken\n", static_cast<unsigned long long>(record.blocks));
  if (keyboard.FaultsStruck() != faults) std::puts("fault");
  blocks = record.blocks;
  faults = keyboard.FaultsStruck();
  std::fflush(stdout);
}

}  // namespace hollin::simulator
