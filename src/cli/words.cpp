// SPDX-License-Identifier: MIT
#include "cli/words.h"

namespace hollin::words {

// Only the last line end is the message's own: those before it would be in the buttons' names,
// which come from the package.
std::vector<std::string> LinesOfNotConnected(const std::string& message) {
  constexpr std::string_view kLineEnd = " \r\n ";
  const size_t end = message.rfind(kLineEnd);
  if (end == std::string::npos) return {message};
  return {message.substr(0, end), message.substr(end + kLineEnd.size())};
}

std::string_view OfRefusal(PackRefusal refusal) {
  switch (refusal) {
    case PackRefusal::kNone:
      break;
    case PackRefusal::kModelTooLong:
      return "The model (--model) is longer than 16 bytes.";
    case PackRefusal::kVersionTooLong:
      return "The firmware version (--firmware-version) is longer than 16 bytes.";
    case PackRefusal::kKeyTooLong:
      return "The name of a button (--key) is longer than 8 bytes.";
    case PackRefusal::kPackCount:
      return "A package holds one or two packs (--pack).";
    case PackRefusal::kDataType:
      return "The type of a pack (--pack) is none of A1, A2 and C1.";
    case PackRefusal::kTooLarge:
      return "A description or image is 2 GiB or longer, or the package would exceed 4 GiB.";
  }
  return "";
}

}  // namespace hollin::words
