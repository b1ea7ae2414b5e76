// SPDX-License-Identifier: MIT
#include "package/dat_file_examine.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "base/file.h"
#include "base/text.h"
#include "package/own_file.h"
#include "package/updater_loader.h"

namespace hollin {
namespace {

using namespace package_layout;

constexpr std::string_view kTempFolder = "/tmp/";
constexpr int32_t kModeRetries = 5;
constexpr std::string_view kNotConnected = "The TS30 is not connected.";

// Copies a field of the package and terminates it; the field itself need not be.
template <size_t size>
void CopyField(ByteView file, size_t offset, std::array<char, size>& text) {
  const ByteView field = file.subspan(offset, size - 1);
  std::copy(field.begin(), field.end(), text.begin());
  text.back() = '\0';
}

template <size_t size>
std::string FieldText(const std::array<char, size>& text) {
  return TextOfField({text.data(), text.size()});
}

// What throws (out of memory) has failed: as good as a package that cannot be read.
template <typename Operation>
bool Succeeds(const Operation& operation) {
  try {
    return operation();
  } catch (...) {
    return false;
  }
}

}  // namespace

bool DatFileExamine::OpenDatFile(const std::string& path) {
  datBuffer.reset();
  fileLength = 0;
  isFileReady = false;
  FileContents file;
  const bool isRead = Succeeds([&] {
    filePath = path;
    return ReadWholeFile(path, file);
  });
  if (!isRead || file.size == 0) return false;
  datBuffer = std::move(file.bytes);
  fileLength = static_cast<int64_t>(file.size);
  return true;
}

bool DatFileExamine::ExamineDatFile() {
  isFileReady = false;
  Update1.reset();
  Update2.reset();
  if (!datBuffer || fileLength < 1) return false;
  isFileReady = Succeeds([this] { return Examine(); });
  return isFileReady;
}

bool DatFileExamine::Examine() {
  PackageHeaders headers;
  if (!ReadHeaders(headers)) return false;
  ReadTexts();
  SetTempPaths();
  if (!WriteTempFiles()) return false;
  const LoadSetup setup{.packs = {{{cnfgPath1, dataPath1}, {cnfgPath2, dataPath2}}},
                        .observer = observer};
  Updaters updaters;
  // Kept only when everything succeeded: half a package must never be run.
  if (!LoadUpdaters(File(), headers, setup, updaters).IsGood()) return false;
  Update1 = std::move(updaters[0]);
  Update2 = std::move(updaters[1]);
  return true;
}

bool DatFileExamine::ReadHeaders(PackageHeaders& headers) {
  const PackageVerdict verdict = CheckPackage(File(), headers);
  countDataPack = headers.packCount;
  const PackHeader& first = headers.packs[0];
  dataType1 = first.dataType;
  cnfgAddr1 = first.config.address;
  cnfgLength1 = first.config.length;
  dataAddr1 = first.data.address;
  dataLength1 = first.data.length;
  const PackHeader& second = headers.packs[1];
  dataType2 = second.dataType;
  cnfgAddr2 = second.config.address;
  cnfgLength2 = second.config.length;
  dataAddr2 = second.data.address;
  dataLength2 = second.data.length;
  return verdict.IsGood();
}

void DatFileExamine::ReadTexts() {
  CopyField(File(), kKeys[0], key1);
  CopyField(File(), kKeys[1], key2);
  CopyField(File(), kKeys[2], key3);
  CopyField(File(), kProductModel, productModel);
  CopyField(File(), kFirmwareVersion, firmwareVersion);
}

void DatFileExamine::SetTempPaths() {
  const std::string folder(kTempFolder);
  cnfgPath1 = folder + "TEMP1.INI";
  cnfgPath2 = folder + "TEMP2.INI";
  dataPath1 = folder + "TEMP1.BIN";
  dataPath2 = folder + "TEMP2.BIN";
}

bool DatFileExamine::WriteTempFiles() const {
  if (!WriteTempFile(cnfgPath1, cnfgAddr1, cnfgLength1)) return false;
  if (!WriteTempFile(dataPath1, dataAddr1, dataLength1)) return false;
  if (!HasTwoPacks()) return true;
  return WriteTempFile(cnfgPath2, cnfgAddr2, cnfgLength2) &&
         WriteTempFile(dataPath2, dataAddr2, dataLength2);
}

bool DatFileExamine::WriteTempFile(const std::string& path, uint32_t offset,
                                   uint32_t length) const {
  if (!LiesInside(File(), offset, length)) return false;
  return WriteOwnFile(path, RegionBytes(File(), offset, length));
}

uint32_t DatFileExamine::PackByteSum(const uint8_t* bytes, int32_t length) {
  return length < 1 ? 0 : PackageSum({bytes, static_cast<size_t>(length)});
}

std::string DatFileExamine::ProductModelText() const {
  return isFileReady ? FieldText(productModel) : std::string();
}

std::string DatFileExamine::FirmwareVersionText() const {
  return isFileReady ? FieldText(firmwareVersion) : std::string();
}

// Deliberate: the longest message that has a third name wins, even where the names before it are
// empty.
std::vector<std::string> DatFileExamine::ButtonsToHold() const {
  if (!isFileReady) return {};
  const std::string first = FieldText(key1);
  const std::string second = FieldText(key2);
  const std::string third = FieldText(key3);
  if (!third.empty()) return {first, second, third};
  if (!second.empty()) return {first, second};
  if (!first.empty()) return {first};
  return {};
}

std::string DatFileExamine::NotConnectedMessage() const {
  const std::vector<std::string> names = ButtonsToHold();
  if (names.empty()) return std::string(kNotConnected);
  std::string buttons = fmt::format(R"("{}")", names[0]);
  if (names.size() == 2) buttons += fmt::format(R"( and "{}")", names[1]);
  if (names.size() == 3) buttons += fmt::format(R"( + "{}" + "{}")", names[1], names[2]);
  return fmt::format("{} Please hold down the {} \r\n buttons while powering on the TS30.",
                     kNotConnected, buttons);
}

// Whether there is a package to run, with an updater for each of its packs.
bool DatFileExamine::IsRunnable() const {
  return isFileReady && Update1 && (Update2 || !HasTwoPacks());
}

int32_t DatFileExamine::TotalStepCount() const {
  if (!IsRunnable()) return 0;
  const uint32_t second = HasTwoPacks() ? Update2->StepCount() : 0;
  return static_cast<int32_t>(Update1->StepCount() + second);
}

bool DatFileExamine::RunUpdateStep(uint32_t step) {
  if (!IsRunnable()) return false;
  const bool isFirst = !HasTwoPacks() || step < Update1->StepCount();
  AXUpdate& updater = isFirst ? *Update1 : *Update2;
  const uint32_t local = isFirst ? step : step - Update1->StepCount();
  if (local == 0) return updater.EnterUpdateMode(kModeRetries);
  if (local == updater.StepCount() - 1) return updater.VerifyImage();
  return updater.RunStep(local - 1);
}

// One end command for the whole update: the second updater shares the first one's link and gets
// none of its own.
bool DatFileExamine::EndUpdate(bool ok) { return IsRunnable() && Update1->FinishUpdate(ok); }

void DatFileExamine::DeleteTempFiles() const {
  RemoveOwnFile(cnfgPath1);
  RemoveOwnFile(cnfgPath2);
  RemoveOwnFile(dataPath1);
  RemoveOwnFile(dataPath2);
}

}  // namespace hollin
