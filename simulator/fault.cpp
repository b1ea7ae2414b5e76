// SPDX-License-Identifier: MIT
#include "simulator/fault.h"

#include <algorithm>
#include <optional>

#include "simulator/number.h"

namespace hollin::simulator {
namespace {

constexpr uint32_t kAlways = Fault::kAlways;

constexpr FaultDescription kDescriptions[] = {
    {FaultKind::kWrongEcho, "wrong-echo", "hcr", 0, 1, "an echo with byte # inverted"},
    {FaultKind::kWrongStatus, "wrong-status", "hcr", 0xE0, 1, "# instead of a status byte"},
    {FaultKind::kWrongSum, "wrong-sum", "hcr", 1, 1, "a verify sum that is too big by #"},
    {FaultKind::kWrongWord, "wrong-word", "hcr", 0, 1, "# as the word of an erase poll or status"},
    {FaultKind::kWrongCapacity, "wrong-capacity", "hcr", 0, 1, "# as the flash's capacity"},
    {FaultKind::kNoReply, "no-reply", "hcr", 0, 1, "one reply is not sent"},
    {FaultKind::kMute, "mute", "hcr", 0, kAlways, "from then on no reply is sent"},
    {FaultKind::kLate, "late", "hcr", 0, 1, "a reply waits until there is another"},
    {FaultKind::kShortReport, "short-report", "rhc", 9, 1, "a report of # bytes"},
    {FaultKind::kWrongOffset, "wrong-offset", "rhc", 1, 1, "a report with offset #"},
    {FaultKind::kWrongTotal, "wrong-total", "rhc", 0, 1, "a report with total length #"},
    {FaultKind::kFlipByte, "flip-byte", "rhc", 0, 1, "a report with byte # inverted"},
    {FaultKind::kDuplicate, "duplicate", "rhc", 0, 1, "a report is sent twice"},
    {FaultKind::kStale, "stale", "rhc", 0, 1, "before a report, the one before it comes again"},
    {FaultKind::kUnsolicited, "unsolicited", "rhc", 1, 1, "before a report, # that no one wants"},
    {FaultKind::kReadFails, "read-fails", "rhc", 0, 1, "a read fails before a report"},
    {FaultKind::kWriteFails, "write-fails", "h", 0, 1, "a report is not taken"},
    {FaultKind::kRemoveBefore, "remove-before", "h", 0, 1, "unplugged, the report is not taken"},
    {FaultKind::kRemoveAt, "remove-at", "hcr", 0, 1, "unplugged, taken but not answered"},
    {FaultKind::kRemoveAfter, "remove-after", "hcr", 0, 1, "unplugged after it was answered"},
    {FaultKind::kHold, "hold", "hcr", 0, 1, "halts before it answers, until it gets SIGCONT"},
    {FaultKind::kOpenFails, "open-fails", "o", 0, 1, "an open is refused"},
};

constexpr struct {
  char letter;
  FaultMoment moment;
} kMoments[] = {{'h', FaultMoment::kHostReport},
                {'c', FaultMoment::kCommand},
                {'r', FaultMoment::kKeyboardReport},
                {'o', FaultMoment::kOpen}};

uint64_t Counted(FaultMoment moment, const FaultCounters& counters) {
  switch (moment) {
    case FaultMoment::kHostReport:
      return counters.hostReports;
    case FaultMoment::kCommand:
      return counters.commands;
    case FaultMoment::kKeyboardReport:
      return counters.keyboardReports;
    case FaultMoment::kOpen:
      return counters.opens;
  }
  return 0;
}

const FaultDescription* FindKind(std::string_view name) {
  const auto* found = std::ranges::find(kDescriptions, name, &FaultDescription::name);
  return found == std::end(kDescriptions) ? nullptr : found;
}

bool ParseParameter(std::string_view text, int64_t& parameter) {
  const bool negative = text.starts_with('-');
  uint64_t value = 0;
  if (!ParseNumber(text.substr(negative ? 1 : 0), UINT32_MAX, value)) return false;
  parameter = static_cast<int64_t>(value) * (negative ? -1 : 1);
  return true;
}

bool ParseTimes(std::string_view text, uint32_t& times) {
  uint64_t value = kAlways;
  if (text != "always" && (!ParseNumber(text, UINT32_MAX, value) || value == 0)) return false;
  times = static_cast<uint32_t>(value);
  return true;
}

// [LETTER]INDEX
bool ParseMoment(std::string_view text, std::string_view allowed, Fault& fault) {
  const auto* named = std::ranges::find(kMoments, text.substr(0, 1).empty() ? ' ' : text[0],
                                        [](const auto& entry) { return entry.letter; });
  const bool hasLetter = named != std::end(kMoments);
  const char letter = hasLetter ? named->letter : 'h';
  if (allowed.find(letter) == std::string_view::npos) return false;
  fault.moment = hasLetter ? named->moment : FaultMoment::kHostReport;
  return ParseNumber(text.substr(hasLetter ? 1 : 0), UINT32_MAX, fault.index) && fault.index > 0;
}

// Cuts the text at the mark; what follows it, or nothing.
std::optional<std::string_view> CutAt(std::string_view& text, char mark) {
  const size_t position = text.find(mark);
  if (position == std::string_view::npos) return std::nullopt;
  const std::string_view rest = text.substr(position + 1);
  text = text.substr(0, position);
  return rest;
}

}  // namespace

std::span<const FaultDescription> FaultDescriptions() { return kDescriptions; }

bool ParseFault(std::string_view text, Fault& fault) {
  auto when = CutAt(text, '@');
  if (!when) return false;
  const auto times = CutAt(*when, 'x');
  const auto parameter = CutAt(text, '=');
  const FaultDescription* kind = FindKind(text);
  if (kind == nullptr) return false;
  Fault parsed{.kind = kind->kind, .parameter = kind->parameter, .times = kind->times};
  if (parameter && !ParseParameter(*parameter, parsed.parameter)) return false;
  if (times && !ParseTimes(*times, parsed.times)) return false;
  if (!ParseMoment(*when, kind->moments, parsed)) return false;
  fault = parsed;
  return true;
}

FaultPlan::FaultPlan(const std::vector<Fault>& faults) {
  for (const Fault& fault : faults) armed.push_back({fault});
}

bool FaultPlan::Strikes(FaultKind kind, const FaultCounters& counters, int64_t& parameter) {
  for (Armed& candidate : armed) {
    const Fault& fault = candidate.fault;
    if (fault.kind != kind || Counted(fault.moment, counters) < fault.index) continue;
    if (fault.times != kAlways && candidate.struck >= fault.times) continue;
    candidate.struck++;
    struck++;
    parameter = fault.parameter;
    return true;
  }
  return false;
}

bool FaultPlan::Strikes(FaultKind kind, const FaultCounters& counters) {
  int64_t unused = 0;
  return Strikes(kind, counters, unused);
}

}  // namespace hollin::simulator
