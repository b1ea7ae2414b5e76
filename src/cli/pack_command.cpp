// SPDX-License-Identifier: MIT
#include "cli/pack_command.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "base/file.h"
#include "cli/output_file.h"
#include "cli/words.h"
#include "package/package_writer.h"

namespace hollin {
namespace {

// The files of one pack, kept while the package is put together.
struct PackFiles {
  FileContents description, image;
};

bool ReadInput(const std::string& path, FileContents& contents, const Console& console) {
  if (ReadWholeFile(path, contents)) return true;
  PrintLine(console.err, fmt::format("Unable to read file: {}", path));
  return false;
}

bool ReadInputs(const PackArguments& arguments, std::vector<PackFiles>& files,
                const Console& console) {
  files.resize(arguments.packs.size());
  for (size_t i = 0; i < files.size(); i++) {
    const PackInput& input = arguments.packs[i];
    if (!ReadInput(input.descriptionPath, files[i].description, console)) return false;
    if (!ReadInput(input.imagePath, files[i].image, console)) return false;
  }
  return true;
}

PackageContents ContentsOf(const PackArguments& arguments, const std::vector<PackFiles>& files) {
  PackageContents contents{.productModel = arguments.model,
                           .firmwareVersion = arguments.firmwareVersion,
                           .keys = {},
                           .packs = {}};
  std::copy(arguments.keys.begin(), arguments.keys.end(), contents.keys.begin());
  for (size_t i = 0; i < files.size(); i++) {
    contents.packs.push_back({.dataType = arguments.packs[i].dataType,
                              .description = files[i].description.View(),
                              .image = files[i].image.View()});
  }
  return contents;
}

}  // namespace

ExitCode RunPackCommand(const PackArguments& arguments, const Console& console) {
  std::vector<PackFiles> files;
  if (!ReadInputs(arguments, files, console)) return ExitCode::kPackage;
  Bytes package;
  const PackRefusal refusal = WritePackage(ContentsOf(arguments, files), package);
  if (refusal != PackRefusal::kNone) {
    PrintLine(console.err, words::OfRefusal(refusal));
    return ExitCode::kUsage;
  }
  std::string reason;
  if (!WriteOutputFile(arguments.output, package, reason)) {
    PrintLine(console.err, fmt::format("Unable to write file: {}: {}", arguments.output, reason));
    return ExitCode::kFailed;
  }
  PrintLine(console.out, fmt::format("{}: {} bytes, {} {}", arguments.output, package.size(),
                                     files.size(), files.size() == 1 ? "pack" : "packs"));
  return ExitCode::kDone;
}

}  // namespace hollin
