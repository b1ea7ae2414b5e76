// SPDX-License-Identifier: MIT
// hollin-cli, its main function included, in the test's own process on a keyboard in that process.
// Pauses take no time. One at a time.
#pragma once

#include <array>
#include <string>

#include "base/bytes.h"
#include "simulator/in_process_hidapi.h"
#include "tests/campaign/reference_updates.h"
#include "tests/support/temp_files.h"
#include "tests/support/temp_folder.h"

namespace hollin::faults {

class WholeProgram {
 public:
  // Writes the package into a folder of its own. The program's lock lies there too.
  explicit WholeProgram(campaign::ReferenceUpdate update);
  ~WholeProgram();
  WholeProgram(const WholeProgram&) = delete;
  WholeProgram& operator=(const WholeProgram&) = delete;

  [[nodiscard]] const std::string& PackagePath() const { return package; }
  [[nodiscard]] const TempFolder& Folder() const { return folder; }

  // Plugs in a keyboard that holds something old, the only one.
  void Plug();
  void Plug(simulator::KeyboardOptions options);

  // hollin-cli update; its exit code. Whatever it throws gets out.
  int Update();
  int Update(const std::string& packagePath);

  // About the keyboard that was plugged in last.
  [[nodiscard]] bool HoldsImages() const;
  [[nodiscard]] bool IsUntouched() const;  // not a single report was sent to it

  // The temporary files that are there, one bit for each.
  [[nodiscard]] static unsigned TempFilesLeft();
  static void RemoveTempFiles();

 private:
  campaign::ReferenceUpdate update;
  std::array<Bytes, 3> expected;  // of the chips after a success
  TempFolder folder;
  std::string package;
  simulator::InProcessHidapi& hidapi = simulator::InProcessHidapi::Instance();
  simulator::Keyboard* keyboard = nullptr;
};

}  // namespace hollin::faults
