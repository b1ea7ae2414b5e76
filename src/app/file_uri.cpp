// SPDX-License-Identifier: MIT
#include "app/file_uri.h"

#include <algorithm>

namespace hollin {
namespace {

constexpr std::string_view kScheme = "file:";
constexpr std::string_view kHexDigits = "0123456789ABCDEF";

bool StandsForItself(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
         std::string_view("/-._~").find(c) != std::string_view::npos;
}

char LowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool BeginsWithScheme(std::string_view uri) {
  return uri.size() >= kScheme.size() &&
         std::equal(kScheme.begin(), kScheme.end(), uri.begin(),
                    [](char a, char b) { return a == LowerAscii(b); });
}

// The value of a hexadecimal digit, or -1.
int DigitValue(char c) {
  const char lower = LowerAscii(c);
  if (lower >= '0' && lower <= '9') return lower - '0';
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

std::optional<std::string> Decode(std::string_view text) {
  std::string decoded;
  for (size_t i = 0; i < text.size(); i++) {
    char c = text[i];
    if (c == '%') {
      if (text.size() - i < 3) return std::nullopt;
      const int high = DigitValue(text[i + 1]);
      const int low = DigitValue(text[i + 2]);
      if (high < 0 || low < 0) return std::nullopt;
      c = static_cast<char>(high * 16 + low);
      i += 2;
    }
    if (c == '\0') return std::nullopt;
    decoded += c;
  }
  return decoded;
}

}  // namespace

std::string FileUriOf(std::string_view path) {
  std::string uri = "file://";
  for (const char c : path) {
    const auto byte = static_cast<unsigned char>(c);
    if (StandsForItself(c)) {
      uri += c;
    } else {
      uri += {'%', kHexDigits[byte / 16], kHexDigits[byte % 16]};
    }
  }
  return uri;
}

std::optional<std::string> PathOfFileUri(std::string_view uri) {
  if (!BeginsWithScheme(uri)) return std::nullopt;
  std::string_view rest = uri.substr(kScheme.size());
  if (rest.starts_with("//")) {
    const size_t slash = rest.find('/', 2);
    if (slash == std::string_view::npos) return std::nullopt;
    const std::string_view host = rest.substr(2, slash - 2);
    if (!host.empty() && host != "localhost") return std::nullopt;
    rest.remove_prefix(slash);
  }
  if (!rest.starts_with('/')) return std::nullopt;
  return Decode(rest);
}

}  // namespace hollin
