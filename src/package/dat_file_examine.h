// SPDX-License-Identifier: MIT
// The package that is being worked with, and the update that it makes: reads and checks a package
// file, writes each pack's description and image to temporary files, makes one updater a pack, and
// drives both through one run of numbered steps. docs/package-format.md describes the file.
//
// Order of calls: OpenDatFile, ExamineDatFile; when both are true, TotalStepCount, RunUpdateStep
// for 0 to the count - 1, EndUpdate; DeleteTempFiles at the end of the program. Every operation
// bears being called at any time; without a ready package it answers false, 0 or the plain text.
// There is no lock: the examination and the update may run on different threads, never at once.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "device/ax_update.h"
#include "package/package_layout.h"

namespace hollin {

class DatFileExamine {
 public:
  // Reads the file whole. False when it cannot be read or is empty.
  [[nodiscard]] bool OpenDatFile(const std::string& path);

  // Checks the package, writes the temporary files and loads the updaters. Makes the package ready,
  // or answers false and leaves it not ready; the updaters of an earlier package are gone either
  // way.
  [[nodiscard]] bool ExamineDatFile();

  // Writes a region of the file that was read to a temporary file. False when that could not be
  // created; whether all bytes found room is not checked here, but ExamineDatFile compares what was
  // read back.
  [[nodiscard]] bool WriteTempFile(const std::string& path, uint32_t offset, uint32_t length) const;

  // The sum that protects every block and region, modulo 2^32; 0 for a length below 1.
  [[nodiscard]] static uint32_t PackByteSum(const uint8_t* bytes, int32_t length);

  // UTF-8; empty while no package is ready.
  [[nodiscard]] std::string ProductModelText() const;
  [[nodiscard]] std::string FirmwareVersionText() const;

  // What to tell a user whose keyboard is not there: which buttons to hold while powering it on.
  [[nodiscard]] std::string NotConnectedMessage() const;
  // The names of those buttons, as many as the message has; none while no package is ready. UTF-8.
  [[nodiscard]] std::vector<std::string> ButtonsToHold() const;

  [[nodiscard]] int32_t TotalStepCount() const;

  // Runs one step of the update, counted over both packs. False when it failed; `observer` was told
  // why.
  [[nodiscard]] bool RunUpdateStep(uint32_t step);

  // Tells the keyboard how the update ended and closes the link. False when that was not
  // acknowledged.
  [[nodiscard]] bool EndUpdate(bool ok);

  // Removes the temporary files; errors are ignored.
  void DeleteTempFiles() const;

  [[nodiscard]] bool IsFileReady() const { return isFileReady; }

  std::string filePath;
  int64_t fileLength = 0;
  bool isFileReady = false;  // only after a fully successful examination
  std::unique_ptr<uint8_t[]> datBuffer;
  uint8_t countDataPack = 0;
  uint32_t dataType1 = 0, dataType2 = 0;
  uint32_t cnfgAddr1 = 0, cnfgAddr2 = 0;
  uint32_t cnfgLength1 = 0, cnfgLength2 = 0;
  uint32_t dataAddr1 = 0, dataAddr2 = 0;
  uint32_t dataLength1 = 0, dataLength2 = 0;
  std::string cnfgPath1, cnfgPath2;
  std::string dataPath1, dataPath2;
  std::unique_ptr<AXUpdate> Update1, Update2;  // both null unless the package is ready
  std::array<char, 9> key1{}, key2{}, key3{};  // buttons to hold, NUL-terminated
  std::array<char, 17> productModel{}, firmwareVersion{};
  UpdateObserver* observer =
      nullptr;  // lent by the caller; handed to the updaters that are made from then on

 private:
  [[nodiscard]] bool Examine();
  [[nodiscard]] bool ReadHeaders(PackageHeaders& headers);
  void ReadTexts();
  void SetTempPaths();
  [[nodiscard]] bool WriteTempFiles() const;
  [[nodiscard]] bool IsRunnable() const;
  [[nodiscard]] bool HasTwoPacks() const { return countDataPack == 2; }
  [[nodiscard]] ByteView File() const { return {datBuffer.get(), static_cast<size_t>(fileLength)}; }
};

}  // namespace hollin
