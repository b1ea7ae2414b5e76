// SPDX-License-Identifier: MIT
#include "app/device_settings.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>

#include "tests/support/temp_folder.h"

namespace hollin {
namespace {

TEST(ParseUsbIdTest, TextIsReadAsStrtoulReadsBaseSixteen) {
  const std::pair<const char*, uint16_t> cases[] = {
      {"0x1c3e", 0x1C3E},
      {"0X1C3E", 0x1C3E},
      {"1c3e", 0x1C3E},
      {"2B91", 0x2B91},
      {"0", 0},
      {"ffff", 0xFFFF},
      {" \t+1c3e", 0x1C3E},
      {"12zz", 0x12},  // up to the first other character
      {"0x12 34", 0x12},
      {"0x", 0},
      {"0xzz", 0},
      {"", 0},
      {"zz", 0},
      {"-1", 0xFFFF},
      {"-2", 0xFFFE},
      {"-0x1c3e", 0xE3C2},
      {"--1", 0},
      {"12345678901234567890", 0xFFFF},  // beyond 64 bits: the largest number
  };
  for (const auto& [text, id] : cases) EXPECT_EQ(ParseUsbId(text), id) << text;
}

TEST(ParseUsbIdTest, OnlyTheLow16BitsCount) {
  EXPECT_EQ(ParseUsbId("ffff"), 0xFFFF);
  EXPECT_EQ(ParseUsbId("10000"), 0x0000);
  EXPECT_EQ(ParseUsbId("10001"), 0x0001);
  EXPECT_EQ(ParseUsbId("0x11c3e"), 0x1C3E);
  EXPECT_EQ(ParseUsbId("FFFFFFFF12345678"), 0x5678);
}

TEST(ParseUsbIdTest, ANulEndsTheText) {
  EXPECT_EQ(ParseUsbId(std::string("12\0"
                                   "34",
                                   5)),
            0x12);
}

class DeviceSettingsTest : public ::testing::Test {
 protected:
  // Puts the printing program there, below the folder.
  std::string Install(const std::string& name) {
    const std::filesystem::path target = folder.Path(name);
    std::filesystem::create_directories(target.parent_path());
    std::filesystem::copy_file(HOLLIN_PRINT_SETTINGS, target);
    return target.string();
  }

  static std::string OutputOf(const std::string& command) {
    std::string output;
    FILE* const pipe = popen(command.c_str(), "r");
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) {
      output += static_cast<char>(c);
    }
    EXPECT_EQ(pclose(pipe), 0);
    return output;
  }

  TempFolder folder;
};

constexpr char kDefaults[] = "|1C3E|2B91|Varnholt TS30 Firmware Update V2.0.0|1";

TEST_F(DeviceSettingsTest, WithoutAConfigurationTheDefaultsCount) {
  const std::string program = Install("Hollin.app/hollin");
  EXPECT_EQ(OutputOf(program), folder.Path("Hollin.app") + kDefaults);
}

TEST_F(DeviceSettingsTest, TheFileBesideTheBundleIsRead) {
  const std::string program = Install("Hollin.app/hollin");
  folder.Write("Config.ini",
               "IDC_VID=0x11234 ; modulo 0x10000\nIDC_PID=zz\nIDS_STRING_CAPTION=My %s {} V1\n");
  folder.Write("Hollin.app/Config.ini", "IDC_VID=0x9999\n");
  EXPECT_EQ(OutputOf(program), folder.Path("Hollin.app") + "|1234|0000|My %s {} V1|1");
}

TEST_F(DeviceSettingsTest, AnEmptyValueIsNotTheDefault) {
  const std::string program = Install("Hollin.app/hollin");
  folder.Write("Config.ini", "IDC_PID= ;note\nIDS_STRING_CAPTION= ;\n");
  EXPECT_EQ(OutputOf(program), folder.Path("Hollin.app") + "|1C3E|0000||1");
}

TEST_F(DeviceSettingsTest, ALinkOnThePathLeadsToTheBundle) {
  const std::string program = Install("apps/Hollin.app/hollin");
  folder.Write("apps/Config.ini", "IDC_VID=1\n");
  folder.Write("Config.ini", "IDC_VID=2\n");
  std::filesystem::create_symlink(program, folder.Path("hollin"));
  EXPECT_EQ(OutputOf(folder.Path("hollin")).substr(0, folder.Path("apps/Hollin.app").size() + 5),
            folder.Path("apps/Hollin.app") + "|0001");
}

TEST_F(DeviceSettingsTest, AProgramThatWasStartedRelativelyFindsItsBundle) {
  Install("Hollin.app/hollin");
  EXPECT_EQ(OutputOf("cd '" + folder.Path("Hollin.app") + "' && ./hollin"),
            folder.Path("Hollin.app") + kDefaults);
}

TEST_F(DeviceSettingsTest, AProgramOutsideABundleReadsTheFileBesideItself) {
  const std::string program = Install("bin/print");
  folder.Write("bin/Config.ini", "IDC_VID=3\n");
  EXPECT_EQ(OutputOf(program).substr(0, program.size() + 5), program + "|0003");
}

TEST_F(DeviceSettingsTest, AProgramThatWasDeletedStillFindsItsFile) {
  const std::string program = Install("Hollin.app/hollin");
  folder.Write("Config.ini", "IDC_VID=4\n");
  EXPECT_EQ(OutputOf(program + " gone").substr(0, folder.Path("Hollin.app").size() + 5),
            folder.Path("Hollin.app") + "|0004");
}

TEST_F(DeviceSettingsTest, AFolderThatContainsTheBundlesNameMisleadsTheLookup) {
  const std::string program = Install("Hollin.app.old/Hollin.app/hollin");
  folder.Write("Hollin.app.old/Config.ini", "IDC_VID=5\n");
  EXPECT_EQ(OutputOf(program), folder.Path("Hollin.app.old/Hollin.app") + kDefaults);
  std::filesystem::create_directory(folder.Path(".old"));
  folder.Write(".old/Hollin.appConfig.ini", "IDC_VID=6\n");
  EXPECT_NE(OutputOf(program).find("|0006|"), std::string::npos);
}

}  // namespace
}  // namespace hollin
