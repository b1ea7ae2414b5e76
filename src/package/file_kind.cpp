// SPDX-License-Identifier: MIT
#include "package/file_kind.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "base/text.h"

namespace hollin {
namespace {

using namespace std::string_view_literals;

struct Signature {
  std::string_view bytes;
  FileKind kind;
};

constexpr std::array<Signature, 10> kSignatures = {{
    {"PK\x03\x04"sv, FileKind::kZip},
    {"PK\x05\x06"sv, FileKind::kZip},
    {"\x1F\x8B"sv, FileKind::kGzip},
    {"7z\xBC\xAF\x27\x1C"sv, FileKind::kSevenZip},
    {"Rar!\x1A\x07"sv, FileKind::kRar},
    {"%PDF-"sv, FileKind::kPdf},
    {"\x7F"
     "ELF"sv,
     FileKind::kProgram},
    {"MZ"sv, FileKind::kProgram},
    {"\x89PNG\r\n"sv, FileKind::kPicture},
    {"\xFF\xD8\xFF"sv, FileKind::kPicture},
}};

constexpr size_t kLooked = 1024;

bool IsWebPage(std::string_view start) {
  return ContainsIgnoringCase(start, "<!doctype html") || ContainsIgnoringCase(start, "<html");
}

bool IsText(std::string_view start) {
  return std::none_of(start.begin(), start.end(), [](char c) {
    return (c >= 0 && c < ' ' && c != '\n' && c != '\r' && c != '\t') || c == '\x7F';
  });
}

}  // namespace

FileKind GuessFileKind(ByteView file) {
  const std::string_view text(reinterpret_cast<const char*>(file.data()), file.size());
  for (const Signature& signature : kSignatures) {
    if (text.substr(0, signature.bytes.size()) == signature.bytes) return signature.kind;
  }
  const std::string_view start = text.substr(0, kLooked);
  if (IsWebPage(start)) return FileKind::kWebPage;
  if (text.find_first_not_of('\0') == std::string_view::npos) return FileKind::kZeros;
  return IsText(start) ? FileKind::kText : FileKind::kUnknown;
}

}  // namespace hollin
