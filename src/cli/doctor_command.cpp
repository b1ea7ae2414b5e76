// SPDX-License-Identifier: MIT
#include "cli/doctor_command.h"

#include <fmt/format.h>
#include <pwd.h>
#include <sys/stat.h>

#include <algorithm>

#include "cli/json.h"
#include "cli/keyboard_report.h"

namespace hollin {
namespace {

using Diagnoses = std::vector<Diagnosis>;

std::string OwnerOf(uid_t user) {
  const passwd* const entry = getpwuid(user);
  return entry != nullptr ? entry->pw_name : fmt::format("user {}", user);
}

// The same rule that an installation brings, in one line.
std::string RuleCure(const Surroundings& surroundings) {
  return fmt::format(
      "echo 'KERNEL==\"hidraw*\", SUBSYSTEM==\"hidraw\", ATTRS{{idVendor}}==\"{:04x}\", "
      "ATTRS{{idProduct}}==\"{:04x}\", TAG+=\"uaccess\"' | sudo tee "
      "/etc/udev/rules.d/70-ts30.rules && sudo udevadm control --reload && sudo udevadm trigger",
      surroundings.vendorId, surroundings.productId);
}

bool IsHexadecimal(std::string_view text) {
  if (text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X") text.remove_prefix(2);
  return !text.empty() &&
         text.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

void LookAtId(const std::string& key, const std::string& text, uint16_t value,
              Diagnoses& diagnoses) {
  if (IsHexadecimal(text) && value != 0) return;
  diagnoses.push_back({"id-not-hexadecimal",
                       fmt::format("{} in Config.ini is \"{}\", which counts as 0x{:04x}{}.", key,
                                   text, value, value == 0 ? " and opens no keyboard" : ""),
                       fmt::format("Write a hexadecimal number there, such as 0x1c3e, or remove "
                                   "{} from Config.ini.",
                                   key)});
}

void LookAtNodes(const Surroundings& surroundings, const std::vector<HidrawNode>& nodes,
                 Diagnoses& diagnoses) {
  for (const HidrawNode& node : nodes) {
    if (!node.mayOpen) {
      diagnoses.push_back({"no-right",
                           fmt::format("{} is a keyboard, but {} may not open it.", node.path,
                                       OwnerOf(surroundings.user)),
                           RuleCure(surroundings)});
    }
    if (node.users.empty()) continue;
    diagnoses.push_back({"in-use",
                         fmt::format("{} is in use by {}.", node.path, fmt::join(node.users, ", ")),
                         "Close that program while the keyboard is updated."});
  }
}

void LookAtCount(const std::vector<ReportedKeyboard>& keyboards, Diagnoses& diagnoses) {
  if (keyboards.empty()) {
    return diagnoses.push_back(
        {"no-keyboard", "No keyboard in update mode is attached.",
         "Switch the keyboard off, hold the buttons that the package names, and switch it on."});
  }
  if (keyboards.size() == 1) return;
  const auto same = static_cast<size_t>(
      std::count_if(keyboards.begin(), keyboards.end(),
                    [](const ReportedKeyboard& keyboard) { return keyboard.sameAs.has_value(); }));
  if (same + 1 == keyboards.size()) {
    return diagnoses.push_back(
        {"listed-several-times",
         fmt::format("One keyboard is listed {} times ({}), and counts as several.",
                     keyboards.size(), keyboards.front().listed.path),
         "Install hidapi 0.15.0 or newer; where that does not help, the keyboard has several "
         "interfaces and cannot be updated by this program."});
  }
  diagnoses.push_back({"several-keyboards",
                       fmt::format("{} keyboards are attached.", keyboards.size() - same),
                       "Unplug all but the one to update."});
}

// Why a temporary file cannot be written; empty when it can.
std::string ReasonAgainst(const struct stat& status, uid_t user) {
  if (status.st_uid != user) return fmt::format("belongs to {}", OwnerOf(status.st_uid));
  if (!S_ISREG(status.st_mode)) return "is not a regular file";
  if (status.st_nlink != 1) return "has more than one name";
  return "";
}

void LookAtTemporaryNames(const Surroundings& surroundings, Diagnoses& diagnoses) {
  for (const char* name : {"TEMP1.INI", "TEMP1.BIN", "TEMP2.INI", "TEMP2.BIN"}) {
    const std::string path = surroundings.temp + "/" + name;
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0) continue;
    const std::string reason = ReasonAgainst(status, surroundings.user);
    if (reason.empty()) continue;
    diagnoses.push_back({"temporary-name-taken",
                         fmt::format("{} {}, so that no package can be opened.", path, reason),
                         fmt::format("sudo rm -r {}", path)});
  }
}

void Print(const Diagnoses& diagnoses, const Console& console) {
  if (diagnoses.empty()) {
    return PrintLine(console.out, "Nothing was found that keeps an update from working.");
  }
  for (const Diagnosis& diagnosis : diagnoses) {
    PrintLine(console.out,
              fmt::format("{}: {} Cure: {}", diagnosis.code, diagnosis.evidence, diagnosis.cure));
  }
}

Json DoctorJson(const Diagnoses& diagnoses) {
  Json list = Json::array();
  for (const Diagnosis& diagnosis : diagnoses) {
    list.push_back(
        {{"code", diagnosis.code}, {"evidence", diagnosis.evidence}, {"cure", diagnosis.cure}});
  }
  return {{"findings", list}};
}

}  // namespace

std::vector<Diagnosis> Diagnose(const Surroundings& surroundings) {
  Diagnoses diagnoses;
  const std::vector<HidrawNode> nodes = FindHidrawNodes(surroundings);
  LookAtId("IDC_VID", surroundings.vendorText, surroundings.vendorId, diagnoses);
  LookAtId("IDC_PID", surroundings.productText, surroundings.productId, diagnoses);
  LookAtNodes(surroundings, nodes, diagnoses);
  LookAtCount(ReportKeyboards(surroundings, nodes), diagnoses);
  LookAtTemporaryNames(surroundings, diagnoses);
  return diagnoses;
}

ExitCode RunDoctorCommand(const DoctorArguments& arguments, const Console& console,
                          const Surroundings& surroundings) {
  const Diagnoses diagnoses = Diagnose(surroundings);
  if (arguments.json) {
    PrintJson(console.out, DoctorJson(diagnoses));
  } else {
    Print(diagnoses, console);
  }
  return diagnoses.empty() ? ExitCode::kDone : ExitCode::kFailed;
}

}  // namespace hollin
