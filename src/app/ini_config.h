// SPDX-License-Identifier: MIT
// The application's configuration, "Config.ini" beside the bundle: lines "key=value", ";" begins a
// comment, no sections. Read once a run; a file that is missing, unreadable or not UTF-8 sets
// nothing, and every lookup brings its default. docs/configuration.md describes the file. The first
// lookup is made before any other thread exists.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace hollin {

class IniConfig {
 public:
  // The program's own configuration, made and read on first use.
  static const IniConfig& instance();

  // The value that the program's configuration has under `key` (case counts), or `defaultValue`
  // when it has none. A key that is set to nothing has the empty value.
  [[nodiscard]] static std::string getValueByKey(const std::string& key,
                                                 const std::string& defaultValue);
  [[nodiscard]] std::string _getValueByKey(const std::string& key,
                                           const std::string& defaultValue) const;

  // Reads the file at `path`.
  explicit IniConfig(const std::string& path);

 private:
  void ReadLine(std::string_view line);

  std::map<std::string, std::string> _configDic;
};

}  // namespace hollin
