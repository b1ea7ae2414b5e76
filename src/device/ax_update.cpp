// SPDX-License-Identifier: MIT
#include "device/ax_update.h"

#include <utf8.h>

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

#include "base/text.h"
#include "device/commands.h"
#include "device/hid_device.h"

namespace hollin {
namespace {

constexpr uint32_t kSumMask = 0xFFFF;

// Numbers are read character by character, and a character is a code point of up to four bytes.
bool HasTwoCharacters(std::string_view validText) {
  return validText.size() > 4 || utf8::unchecked::distance(validText.begin(), validText.end()) >= 2;
}

bool HexDigit(char32_t c, uint32_t& digit) {
  if (c >= '0' && c <= '9') {
    digit = c - '0';
  } else if (c >= 'a' && c <= 'f') {
    digit = c - 'a' + 10;
  } else if (c >= 'A' && c <= 'F') {
    digit = c - 'A' + 10;
  } else {
    return false;
  }
  return true;
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool ParseDigit(char c, uint32_t& value) {
  if (!IsDigit(c)) return false;
  value = static_cast<uint32_t>(c - '0');
  return true;
}

bool IsScale(char32_t c) { return (c | 0x20) == 'k' || (c | 0x20) == 'm'; }

// Deliberate: no check that a character is a digit; its distance from "0" counts, modulo 2^32. M
// scales by 1024 like K, not by 1024 x 1024; descriptions are written for it. Where either letter
// stands anywhere, the last character is left out.
uint32_t DecimalNumber(std::string_view validDigits) {
  const char* at = validDigits.data();
  const char* const end = at + validDigits.size();
  uint32_t value = 0;
  for (; at != end && IsDigit(*at); at++) value = value * 10 + static_cast<uint32_t>(*at - '0');
  uint32_t withoutLast = 0;
  bool isScaled = false;
  while (at != end) {
    const char32_t c = utf8::unchecked::next(at);
    isScaled = isScaled || IsScale(c);
    withoutLast = value;
    value = value * 10 + (c - U'0');
  }
  return isScaled ? withoutLast * 1024 : value;
}

bool IsSame(ByteView a, ByteView b) { return std::equal(a.begin(), a.end(), b.begin(), b.end()); }

// Closes the link at the end of a scope, even when memory runs out in it.
struct LinkCloser {
  LinkCloser() = default;
  LinkCloser(const LinkCloser&) = delete;
  LinkCloser& operator=(const LinkCloser&) = delete;
  ~LinkCloser() { HidDevice::Close(); }
};

}  // namespace

AXUpdate::AXUpdate(std::string configPath, std::string imagePath)
    : configPath(std::move(configPath)), imagePath(std::move(imagePath)) {}

bool AXUpdate::RunStep(uint32_t /*index*/) { return true; }

bool AXUpdate::EnterUpdateMode(int32_t retries) {
  if (!Connect()) return false;
  const Bytes command = ModeCommand(mode);
  for (int32_t attempt = 0; attempt < retries; attempt++) {
    if (Exchange(command, std::array{kModeEntered})) return true;
  }
  return false;
}

bool AXUpdate::Send(ByteView data) {
  return HidDevice::SendMessage(data) || Fail(HidDevice::lastFailure);
}

bool AXUpdate::Receive(std::span<uint8_t> buffer) { return HidDevice::ReceiveMessage(buffer); }

bool AXUpdate::Send(ByteView data, double /*timeOut*/) { return Send(data); }

bool AXUpdate::Receive(std::span<uint8_t> buffer, double /*timeOut*/) { return Receive(buffer); }

bool AXUpdate::VerifyRange(uint32_t address, uint32_t length, uint32_t expectedSum) {
  return Exchange(VerifyCommand(address, length), VerifyReply(address, length, expectedSum));
}

bool AXUpdate::FinishUpdate(bool success) {
  if (!Connect()) return false;
  const LinkCloser closer;
  const Bytes command = EndCommand(success);
  return Exchange(command, command);
}

uint32_t AXUpdate::ImageWordSum() const {
  return image && imageLength > 0 ? SumWords(ImageView()) & kSumMask : 0;
}

uint32_t AXUpdate::WordSum(const uint8_t* data, int32_t length) {
  if (data == nullptr || length < 1) return 0;
  return SumWords({data, static_cast<size_t>(length)}) & kSumMask;
}

uint32_t AXUpdate::ByteSum(const uint8_t* data, int32_t length) {
  if (data == nullptr || length < 1) return 0;
  return SumBytes({data, static_cast<size_t>(length)}) & kSumMask;
}

bool AXUpdate::ParseNumber(std::string_view text, uint32_t& value) {
  if (text.size() == 1) return ParseDigit(text.front(), value);
  if (!IsValidUtf8(text)) return false;
  const std::string_view number = Trim(text);
  return number.size() > 1 && ParseTrimmed(number, value);
}

bool AXUpdate::ParseTrimmed(std::string_view text, uint32_t& value) {
  if (text.size() == 1) return ParseDigit(text.front(), value);
  std::string_view number = text;
  if (!HasTwoCharacters(number)) return false;
  const bool hasPrefix = number[0] == '0' && (number[1] | 0x20) == 'x';
  const bool hasSuffix = (number.back() | 0x20) == 'h';
  if (!hasPrefix && !hasSuffix) {
    value = DecimalNumber(number);
    return true;
  }
  if (hasPrefix) number.remove_prefix(2);
  if (hasSuffix) number.remove_suffix(1);
  return ParseHex(number, value);
}

bool AXUpdate::ParseHex(std::string_view digits, uint32_t& value) {
  if (digits.empty()) return false;
  value = 0;
  for (const char c : digits) {
    uint32_t digit = 0;
    value *= 16;
    if (!HexDigit(static_cast<unsigned char>(c), digit)) return false;
    value += digit;
  }
  return true;
}

bool AXUpdate::ParseDecimal(std::string_view digits, uint32_t& value) {
  if (digits.empty() || !IsValidUtf8(digits)) return false;
  value = DecimalNumber(digits);
  return true;
}

bool AXUpdate::Connect() { return HidDevice::Connect(*this) || Fail(HidDevice::lastFailure); }

bool AXUpdate::ExchangePrefix(ByteView command, ByteView expected, size_t compared,
                              double timeOut) {
  return SendCommand(command, timeOut) &&
         CompareReply(expected, compared, timeOut) == Comparison::kEqual;
}

bool AXUpdate::Exchange(ByteView command, ByteView expected, double timeOut) {
  return ExchangePrefix(command, expected, expected.size(), timeOut);
}

bool AXUpdate::SendUntilEchoed(ByteView command, int resends, double timeOut) {
  for (int sent = 0; sent <= resends; sent++) {
    if (!SendCommand(command, timeOut)) return false;
    const Comparison echo = CompareReply(command, command.size(), timeOut);
    if (echo != Comparison::kDifferent) return echo == Comparison::kEqual;
  }
  return false;
}

bool AXUpdate::AwaitStatus(uint8_t status, double timeOut) {
  return CompareReply(std::array{status}, 1, timeOut) == Comparison::kEqual;
}

bool AXUpdate::SendCommand(ByteView command, double timeOut) {
  lastCommand.assign(command.begin(), command.end());
  return Send(command, timeOut);
}

bool AXUpdate::AwaitReply(std::span<uint8_t> reply, double timeOut) {
  return Receive(reply, timeOut) || Fail(HidDevice::lastFailure);
}

AXUpdate::Comparison AXUpdate::CompareReply(ByteView expected, size_t compared, double timeOut) {
  // A reply may end early: what did not arrive must not equal what is expected.
  Bytes reply(expected.size());
  std::transform(expected.begin(), expected.end(), reply.begin(),
                 [](uint8_t byte) { return static_cast<uint8_t>(~byte); });
  if (!Receive(reply, timeOut)) {
    Fail(HidDevice::lastFailure, expected, reply);
    return Comparison::kFailed;
  }
  if (IsSame(ByteView(reply).first(compared), expected.first(compared))) return Comparison::kEqual;
  Fail(UpdateFailure::kWrongReply, expected, reply);
  return Comparison::kDifferent;
}

ByteView AXUpdate::ImageView() const { return {image.get(), static_cast<size_t>(imageLength)}; }

bool AXUpdate::LoadImage() {
  FileContents file;
  if (!readFile(imagePath, file)) return Refuse(LoadRefusal::kUnreadable);
  if (file.size == 0) return Refuse(LoadRefusal::kImageEmpty);
  image = std::move(file.bytes);
  imageLength = static_cast<int64_t>(file.size);
  return true;
}

bool AXUpdate::Refuse(LoadRefusal reason) {
  refusal = reason;
  return false;
}

// Deliberate: no more steps than a signed 32-bit number holds, though they are counted unsigned.
bool AXUpdate::SetStepCount(uint64_t count) {
  if (count > static_cast<uint64_t>(std::numeric_limits<int32_t>::max())) {
    return Refuse(LoadRefusal::kTooManySteps);
  }
  stepCount = static_cast<uint32_t>(count);
  return true;
}

bool AXUpdate::Fail(UpdateFailure reason, ByteView expected, ByteView reply) {
  if (observer != nullptr) {
    observer->CommandFailed(
        {.reason = reason, .command = lastCommand, .expected = expected, .reply = reply});
  }
  return false;
}

}  // namespace hollin
