// SPDX-License-Identifier: MIT
// A folder of a test's own, gone with everything in it when the test ends.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

#include "base/bytes.h"

namespace hollin {

class TempFolder {
 public:
  TempFolder() : path((std::filesystem::temp_directory_path() / "hollin-test-XXXXXX").string()) {
    if (mkdtemp(path.data()) == nullptr) throw std::runtime_error("no temporary folder");
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  [[nodiscard]] const std::string& Path() const { return path; }
  [[nodiscard]] std::string Path(std::string_view name) const {
    return path + "/" + std::string(name);
  }

  // Writes a file and gives its path.
  std::string Write(std::string_view name, ByteView bytes) const {
    std::ofstream file(Path(name), std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    if (!file.flush()) throw std::runtime_error("cannot write " + Path(name));
    return Path(name);
  }
  std::string Write(std::string_view name, std::string_view text) const {
    return Write(name, ByteView(reinterpret_cast<const uint8_t*>(text.data()), text.size()));
  }

  [[nodiscard]] Bytes Read(std::string_view name) const {
    std::ifstream file(Path(name), std::ios::binary);
    if (!file) throw std::runtime_error("cannot read " + Path(name));
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }

 private:
  std::string path;
};

}  // namespace hollin
