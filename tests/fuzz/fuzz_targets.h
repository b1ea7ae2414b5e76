// SPDX-License-Identifier: MIT
// What is fed with hostile bytes: one function a target, each of which bears any input and aborts
// when something that must hold does not. libFuzzer and the replay of the seeds share them.
#pragma once

#include <span>

#include "base/bytes.h"

namespace hollin::fuzz {

struct Target {
  const char* name;  // also of its folder of seeds
  void (*run)(ByteView input);
};
[[nodiscard]] std::span<const Target> Targets();

// Those that compare with a second telling of the same rules.
void Package(ByteView input);
void Number(ByteView input);
void Config(ByteView input);
void Lines(ByteView input);
void Reply(ByteView input);
void A1Replies(ByteView input);
void A2Replies(ByteView input);
void C1Replies(ByteView input);
// Those that look at what must hold by itself.
void A1Text(ByteView input);
void A2Text(ByteView input);
void C1Text(ByteView input);
void PackageUpdate(ByteView input);

// Aborts, with the words, unless it holds.
void Require(bool holds, const char* words);

}  // namespace hollin::fuzz
