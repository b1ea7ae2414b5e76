// SPDX-License-Identifier: MIT
#include "cli/inspect_command.h"

#include <string>

#include "base/file.h"
#include "cli/inspection_json.h"
#include "cli/inspection_text.h"
#include "cli/words.h"

namespace hollin {
namespace {

ExitCode FailToOpen(const InspectArguments& arguments, const Console& console) {
  const std::string message = std::string(words::kUnableToOpen) + arguments.package;
  if (arguments.json) {
    PrintJson(console.out, ErrorJson(ExitCode::kPackage, "unreadable", message));
  } else {
    PrintLine(console.err, message);
  }
  return ExitCode::kPackage;
}

}  // namespace

ExitCode RunInspectCommand(const InspectArguments& arguments, const Console& console) {
  FileContents file;
  if (!ReadWholeFile(arguments.package, file)) return FailToOpen(arguments, console);
  const PackageInspection inspection = InspectPackage(file.View());
  if (arguments.json) {
    PrintJson(console.out, InspectionJson(arguments.package, inspection));
  } else {
    for (const std::string& line : InspectionText(arguments.package, inspection)) {
      PrintLine(console.out, line);
    }
  }
  return ExitCodeOf(inspection, arguments.strict);
}

ExitCode ExitCodeOf(const PackageInspection& inspection, bool strict) {
  const bool isGood = inspection.isValid && (!strict || inspection.findings.Empty());
  return isGood ? ExitCode::kDone : ExitCode::kPackage;
}

}  // namespace hollin
