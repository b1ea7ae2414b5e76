// SPDX-License-Identifier: MIT
// How a keyboard misbehaves: a list of faults, each with the moment from which it is due and how
// often it happens. A fault strikes at the first occasion that suits its kind once it is due:
// wrong-sum@1 spoils the first sum that is asked for.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace hollin::simulator {

enum class FaultKind {
  kWrongEcho,
  kWrongStatus,
  kWrongSum,
  kWrongWord,
  kWrongCapacity,
  kNoReply,
  kMute,
  kLate,
  kShortReport,
  kWrongOffset,
  kWrongTotal,
  kFlipByte,
  kDuplicate,
  kStale,
  kUnsolicited,
  kReadFails,
  kWriteFails,
  kRemoveBefore,
  kRemoveAt,
  kRemoveAfter,
  kHold,
  kOpenFails,
};

// What a fault's index counts, each from 1 over the keyboard's whole life.
enum class FaultMoment {
  kHostReport,      // reports from the host
  kCommand,         // whole messages from the host, without those that are a block's data
  kKeyboardReport,  // reports to the host
  kOpen,            // opens of the keyboard
};

struct FaultCounters {
  uint64_t hostReports = 0;
  uint64_t commands = 0;
  uint64_t keyboardReports = 0;
  uint64_t opens = 0;
};

struct Fault {
  static constexpr uint32_t kAlways = 0;

  FaultKind kind = FaultKind::kWrongEcho;
  FaultMoment moment = FaultMoment::kHostReport;
  uint64_t index = 1;
  int64_t parameter = 0;  // see FaultDescriptions
  uint32_t times = 1;

  bool operator==(const Fault&) const = default;
};

// What there is to know of a kind; the text form, the help and the tests go by this table.
struct FaultDescription {
  FaultKind kind;
  const char* name;
  const char* moments;  // the letters of the moments that make sense for it
  int64_t parameter;    // unless one is given
  uint32_t times;       // unless given
  const char* meaning;  // with # for the parameter
};
[[nodiscard]] std::span<const FaultDescription> FaultDescriptions();

// Reads the text form NAME[=PARAMETER]@[LETTER]INDEX[xTIMES], where TIMES is a number or "always",
// and the letter is h or none for host reports, c for commands, r for keyboard reports, o for
// opens: "wrong-echo@12", "short-report=9@r3", "wrong-status=0xE0@c1x5", "open-fails@o1". False,
// with `fault` as it was, for anything else.
[[nodiscard]] bool ParseFault(std::string_view text, Fault& fault);

// The faults of one keyboard and how often each has struck.
class FaultPlan {
 public:
  explicit FaultPlan(const std::vector<Fault>& faults);

  // True when a fault of the kind strikes now; it is counted and its parameter told.
  [[nodiscard]] bool Strikes(FaultKind kind, const FaultCounters& counters, int64_t& parameter);
  [[nodiscard]] bool Strikes(FaultKind kind, const FaultCounters& counters);

  [[nodiscard]] uint64_t Struck() const { return struck; }

 private:
  struct Armed {
    Fault fault;
    uint32_t struck = 0;
  };

  std::vector<Armed> armed;
  uint64_t struck = 0;  // of all kinds together
};

}  // namespace hollin::simulator
