// SPDX-License-Identifier: MIT
#include "cli/pack_command.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "base/file.h"
#include "cli/inspect_command.h"
#include "cli/inspection_json.h"
#include "cli/inspection_text.h"
#include "cli/output_file.h"
#include "cli/refusal_words.h"
#include "cli/words.h"
#include "package/package_writer.h"

namespace hollin {
namespace {

// The files of one pack, kept while the package is put together.
struct PackFiles {
  FileContents description, image;
};

// Says why there is no package.
class Refusing {
 public:
  Refusing(const PackArguments& arguments, const Console& console)
      : isJson(arguments.json), console(console) {}

  [[nodiscard]] ExitCode operator()(ExitCode exitCode, std::string_view code,
                                    std::string_view message) const {
    if (isJson) {
      PrintJson(console.out, ErrorJson(exitCode, code, message));
    } else {
      PrintLine(console.err, message);
    }
    return exitCode;
  }

 private:
  bool isJson;
  const Console& console;
};

// Gives the path of the first file that cannot be read; empty when all could be.
std::string ReadInputs(const PackArguments& arguments, std::vector<PackFiles>& files) {
  files.resize(arguments.packs.size());
  for (size_t i = 0; i < files.size(); i++) {
    const PackInput& input = arguments.packs[i];
    if (!ReadWholeFile(input.descriptionPath, files[i].description)) return input.descriptionPath;
    if (!ReadWholeFile(input.imagePath, files[i].image)) return input.imagePath;
  }
  return "";
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

void TellInspection(const PackArguments& arguments, const PackageInspection& inspection,
                    const Console& console) {
  PrintLine(console.out,
            fmt::format("{}: {} bytes, {} {}", arguments.output, inspection.fileLength,
                        arguments.packs.size(), arguments.packs.size() == 1 ? "pack" : "packs"));
  if (!inspection.isValid) {
    const words::Refusal refusal = words::OfInvalid(inspection);
    PrintLine(console.err, fmt::format("The package is written, but it is not valid: {}: {}",
                                       refusal.code, refusal.message));
  }
  if (inspection.findings.Empty()) return;
  for (const std::string& line : FindingsText(inspection.findings)) PrintLine(console.out, line);
}

ExitCode Inspect(const PackArguments& arguments, ByteView package, const Console& console) {
  const PackageInspection inspection = InspectPackage(package);
  if (arguments.json) {
    PrintJson(console.out, InspectionJson(arguments.output, inspection));
  } else {
    TellInspection(arguments, inspection, console);
  }
  return ExitCodeOf(inspection, arguments.strict);
}

}  // namespace

ExitCode RunPackCommand(const PackArguments& arguments, const Console& console) {
  const Refusing refuse(arguments, console);
  std::vector<PackFiles> files;
  const std::string unreadable = ReadInputs(arguments, files);
  if (!unreadable.empty()) {
    return refuse(ExitCode::kPackage, "unreadable", "Unable to read file: " + unreadable);
  }
  Bytes package;
  const PackRefusal refusal = WritePackage(ContentsOf(arguments, files), package);
  if (refusal != PackRefusal::kNone) {
    return refuse(ExitCode::kUsage, "not-representable", words::OfRefusal(refusal));
  }
  std::string reason;
  if (!WriteOutputFile(arguments.output, package, reason)) {
    return refuse(ExitCode::kFailed, "not-written",
                  fmt::format("Unable to write file: {}: {}", arguments.output, reason));
  }
  return Inspect(arguments, package, console);
}

}  // namespace hollin
