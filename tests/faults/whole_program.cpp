// SPDX-License-Identifier: MIT
#include "tests/faults/whole_program.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <utility>
#include <vector>

#include "base/log.h"
#include "base/pause.h"
#include "tests/faults/system_faults.h"
#include "tests/support/hex_bytes.h"

int HollinCliMain(int argc, char* argv[]);  // main of src/cli/main.cpp

namespace hollin::faults {
namespace {

using simulator::Keyboard;

constexpr uint8_t kOld = 0x5A;

std::array<simulator::FlashMemory*, 3> Memories(Keyboard& keyboard) {
  return {&keyboard.A1().memory, &keyboard.A2().memory, &keyboard.C1().memory};
}

// A whole chip: the images where they belong, erased bytes behind them, the old ones elsewhere.
Bytes ChipAfter(const std::vector<campaign::ReferenceWrite>& places, size_t size, bool hasWords) {
  Bytes chip = Filled(size, kOld);
  for (const auto& place : places) {
    const auto begin = chip.begin() + static_cast<long>(place.place);
    const size_t odd = hasWords ? place.data.size() % 2 : 0;
    std::fill_n(begin, place.placeSize, uint8_t{0xFF});
    std::copy_n(place.data.begin(), place.data.size() - odd, begin);
  }
  return chip;
}

}  // namespace

WholeProgram::WholeProgram(campaign::ReferenceUpdate reference)
    : update(std::move(reference)), package(folder.Write("package.dat", PackageOf(update))) {
  RemoveTempFiles();
  setenv("XDG_RUNTIME_DIR", folder.Path().c_str(), 1);
  SetLogFunction([](const std::string& /*line*/) {});
  SetPauseFunction([this](std::chrono::milliseconds length) {
    const Uncounted scope;
    hidapi.PassTime(length);
  });
  const campaign::Places places = PlannedPlaces(update);
  Keyboard sound(update.keyboard);
  for (size_t i = 0; i < expected.size(); i++) {
    expected[i] = ChipAfter(places[i], Memories(sound)[i]->Size(), i == 1);
  }
  Faults().executable = folder.Path("hollin-cli");  // so that no Config.ini is found but a test's
}

WholeProgram::~WholeProgram() {
  Faults().executable.clear();
  SetPauseFunction({});
  SetLogFunction({});
  hidapi.Reset();
  RemoveTempFiles();
}

void WholeProgram::Plug() { Plug(update.keyboard); }

void WholeProgram::Plug(simulator::KeyboardOptions options) {
  hidapi.Reset();
  hidapi.recordCalls = false;
  keyboard = &hidapi.Attach(std::move(options));
  for (simulator::FlashMemory* memory : Memories(*keyboard)) {
    static_cast<void>(memory->Program(0, Filled(memory->Size(), kOld)));
    memory->programmed.clear();
  }
}

int WholeProgram::Update() { return Update(package); }

int WholeProgram::Update(const std::string& packagePath) {
  // In plain arrays, so that the first allocation is the program's.
  char name[] = "hollin-cli";
  char verb[] = "update";
  std::array<char, 256> path{};
  packagePath.copy(path.data(), path.size() - 1);
  std::array<char*, 4> arguments = {name, verb, path.data(), nullptr};
  return HollinCliMain(3, arguments.data());
}

bool WholeProgram::HoldsImages() const {
  for (size_t i = 0; i < expected.size(); i++) {
    if (!std::ranges::equal(Memories(*keyboard)[i]->Contents(), expected[i])) return false;
  }
  return true;
}

bool WholeProgram::IsUntouched() const { return keyboard->Record().counters.hostReports == 0; }

unsigned WholeProgram::TempFilesLeft() {
  unsigned left = 0;
  for (size_t i = 0; i < kTempFiles.size(); i++) {
    struct stat status = {};
    if (fstatat(AT_FDCWD, kTempFiles[i], &status, AT_SYMLINK_NOFOLLOW) == 0) left |= 1U << i;
  }
  return left;
}

void WholeProgram::RemoveTempFiles() {
  for (const char* path : kTempFiles) {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }
}

}  // namespace hollin::faults
