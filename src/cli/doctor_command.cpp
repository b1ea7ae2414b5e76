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

// An id in a rule, as the kernel writes it; one of 0 stands for any.
std::string IdInRule(uint16_t id) { return id == 0 ? "*" : fmt::format("{:04X}", id); }

// The same rule that an installation brings, with the ids in force. It is there for what is plugged
// in from then on.
std::string RuleCure(const Surroundings& surroundings) {
  return fmt::format(
      "echo 'ACTION!=\"remove\", SUBSYSTEM==\"hidraw\", KERNELS==\"*:{}:{}.*\", "
      "TAG+=\"uaccess\"' | sudo tee /etc/udev/rules.d/70-ts30.rules && "
      "sudo udevadm control --reload # then plug the keyboard in again",
      IdInRule(surroundings.vendorId), IdInRule(surroundings.productId));
}

// Of at most 16 bits: more would be cut off.
bool IsUsbId(std::string_view text) {
  constexpr size_t kMostDigits = 4;
  if (text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X") text.remove_prefix(2);
  if (text.empty()) return false;
  text.remove_prefix(std::min(text.find_first_not_of('0'), text.size()));
  return text.size() <= kMostDigits &&
         text.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

void LookAtId(const std::string& key, const std::string& text, uint16_t value,
              Diagnoses& diagnoses) {
  if (IsUsbId(text) && value != 0) return;
  diagnoses.push_back(
      {"id-not-hexadecimal",
       fmt::format("{} in Config.ini is \"{}\", which counts as 0x{:04x}{}.", key, text, value,
                   value == 0 ? " and opens no keyboard" : ""),
       fmt::format("Write a hexadecimal number of at most four digits there, such as 0x1c3e, or "
                   "remove {} from Config.ini.",
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

// How often one keyboard is listed, of which `first` is the first entry.
void LookAtListing(const std::vector<ReportedKeyboard>& keyboards, size_t first,
                   Diagnoses& diagnoses) {
  const auto times = 1 + std::count_if(keyboards.begin(), keyboards.end(),
                                       [first](const ReportedKeyboard& keyboard) {
                                         return keyboard.sameAs == first;
                                       });
  if (times == 1) return;
  diagnoses.push_back(
      {"listed-several-times",
       fmt::format("One keyboard is listed {} times ({}), and counts as several.", times,
                   keyboards[first].listed.path),
       "Install hidapi 0.15.0 or newer; where that does not help, the keyboard has several "
       "interfaces and cannot be updated by this program."});
}

void LookAtCount(const std::vector<ReportedKeyboard>& keyboards, Diagnoses& diagnoses) {
  if (keyboards.empty()) {
    return diagnoses.push_back(
        {"no-keyboard", "No keyboard in update mode is attached.",
         "Switch the keyboard off, hold the buttons that the package names, and switch it on."});
  }
  size_t count = 0;
  for (size_t i = 0; i < keyboards.size(); i++) {
    if (keyboards[i].sameAs) continue;
    count++;
    LookAtListing(keyboards, i, diagnoses);
  }
  if (count == 1) return;
  diagnoses.push_back({"several-keyboards", fmt::format("{} keyboards are attached.", count),
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

void LookAtLock(const Surroundings& surroundings, Diagnoses& diagnoses) {
  if (!surroundings.isAnotherAtWork()) return;
  diagnoses.push_back({"another-at-work",
                       "Another Hollin of yours, the window or an update, is at work.",
                       "Close it, then try again."});
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
  LookAtLock(surroundings, diagnoses);
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
