// SPDX-License-Identifier: MIT
#include "app/ini_config.h"

#include "app/bundle.h"
#include "base/file.h"
#include "base/text.h"

namespace hollin {
namespace {

constexpr uint64_t kLargestFile = 4 << 20;  // a configuration is a few lines; more is a mistake

}  // namespace

const IniConfig& IniConfig::instance() {
  // Never destroyed: a worker may outlive the static objects.
  static const auto& config = *new IniConfig(ConfigPathOf(BundlePath()));
  return config;
}

std::string IniConfig::getValueByKey(const std::string& key, const std::string& defaultValue) {
  return instance()._getValueByKey(key, defaultValue);
}

std::string IniConfig::_getValueByKey(const std::string& key,
                                      const std::string& defaultValue) const {
  const auto found = _configDic.find(key);
  return found == _configDic.end() ? defaultValue : found->second;
}

IniConfig::IniConfig(const std::string& path) {
  FileContents file;
  if (!ReadWholeFile(path, file, kLargestFile) || !IsValidUtf8(file.Text())) return;
  std::string_view rest = file.Text();
  while (!rest.empty()) {
    const size_t end = rest.find('\n');
    ReadLine(rest.substr(0, end));
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  }
}

void IniConfig::ReadLine(std::string_view line) {
  std::string_view setting = Trim(line);
  setting = setting.substr(0, setting.find(';'));
  const size_t equals = setting.find('=');
  if (equals == std::string_view::npos || equals == 0 || equals + 1 == setting.size()) return;
  _configDic[std::string(Trim(setting.substr(0, equals)))] = Trim(setting.substr(equals + 1));
}

}  // namespace hollin
