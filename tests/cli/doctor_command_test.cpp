// SPDX-License-Identifier: MIT
#include "cli/doctor_command.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "cli/json.h"
#include "tests/cli/fake_surroundings.h"

namespace hollin {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class DoctorCommandTest : public ::testing::Test {
 protected:
  std::vector<std::string> Codes() {
    std::vector<std::string> codes;
    for (const Diagnosis& diagnosis : Diagnose(machine.surroundings)) {
      codes.emplace_back(diagnosis.code);
    }
    return codes;
  }

  Diagnosis Only() {
    const std::vector<Diagnosis> diagnoses = Diagnose(machine.surroundings);
    EXPECT_EQ(diagnoses.size(), 1U);
    return diagnoses.empty() ? Diagnosis{} : diagnoses.front();
  }

  ExitCode Run(bool json = false) {
    out.str("");
    return RunDoctorCommand({.json = json}, {.out = out, .err = err}, machine.surroundings);
  }

  FakeSurroundings machine;
  std::ostringstream out, err;
};

TEST_F(DoctorCommandTest, AHealthyMachineHasNothing) {
  machine.Plug("hidraw3", "1-2");
  machine.folder.Write("tmp/TEMP1.INI", "left over, but ours");
  EXPECT_EQ(Run(), ExitCode::kDone);
  EXPECT_EQ(out.str(), "Nothing was found that keeps an update from working.\n");
  EXPECT_EQ(Run(true), ExitCode::kDone);
  EXPECT_EQ(Json::parse(out.str()), Json::parse(R"({"findings": []})"));
}

TEST_F(DoctorCommandTest, EveryFindingIsALineWithEvidenceAndCure) {
  EXPECT_EQ(Run(), ExitCode::kFailed);
  EXPECT_EQ(out.str(),
            "no-keyboard: No keyboard in update mode is attached. Cure: Switch the keyboard off, "
            "hold the buttons that the package names, and switch it on.\n");
  EXPECT_EQ(Run(true), ExitCode::kFailed);
  EXPECT_EQ(Json::parse(out.str())["findings"][0]["code"], "no-keyboard");
}

TEST_F(DoctorCommandTest, AMissingRightIsFoundWithTheRuleThatGivesIt) {
  machine.Plug("hidraw3", "1-2");
  machine.closed = {"/dev/hidraw3"};
  EXPECT_EQ(Only().code, "no-right");
  EXPECT_THAT(Only().evidence, HasSubstr("/dev/hidraw3 is a keyboard, but "));
  EXPECT_EQ(Only().cure,
            "echo 'ACTION!=\"remove\", SUBSYSTEM==\"hidraw\", KERNELS==\"*:1C3E:2B91.*\", "
            "TAG+=\"uaccess\"' | sudo tee /etc/udev/rules.d/70-ts30.rules && sudo udevadm control "
            "--reload # then plug the keyboard in again");
}

TEST_F(DoctorCommandTest, TheRuleIsThatOfAnInstallation) {
  machine.Plug("hidraw3", "1-2");
  machine.closed = {"/dev/hidraw3"};
  std::ifstream file(HOLLIN_UDEV_RULE);
  std::string rule;
  for (std::string line; std::getline(file, line);) {
    if (line.substr(0, 1) != "#") rule = line;
  }
  ASSERT_NE(rule, "");
  EXPECT_THAT(Only().cure, StartsWith("echo '" + rule + "' | "));
}

TEST_F(DoctorCommandTest, TheRuleHasTheIdsInForce) {
  machine.surroundings.vendorId = 0xABC;
  machine.surroundings.productId = 0;
  machine.Plug("hidraw3", "1-2", "", true, "00000ABC:00000001");
  machine.closed = {"/dev/hidraw3"};
  EXPECT_THAT(Diagnose(machine.surroundings).back().cure, HasSubstr("KERNELS==\"*:0ABC:*.*\""));
}

TEST_F(DoctorCommandTest, AnotherHollinAtWorkIsFound) {
  machine.Plug("hidraw3", "1-2");
  machine.isAnotherAtWork = true;
  EXPECT_EQ(Only().code, "another-at-work");
  EXPECT_EQ(Only().cure, "Close it, then try again.");
}

TEST_F(DoctorCommandTest, NodesOfOtherDevicesDoNotCount) {
  machine.Plug("hidraw2", "1-1", "", false, "00001C3E:00002B92");
  machine.closed = {"/dev/hidraw2"};
  EXPECT_THAT(Codes(), ElementsAre("no-keyboard"));
}

TEST_F(DoctorCommandTest, AProgramThatHasTheKeyboardOpenIsNamed) {
  machine.Plug("hidraw3", "1-2");
  machine.AddUser(999001, "player", "/dev/hidraw3");
  EXPECT_EQ(Only().code, "in-use");
  EXPECT_EQ(Only().evidence, "/dev/hidraw3 is in use by player (999001).");
}

TEST_F(DoctorCommandTest, OneKeyboardThatIsListedTwiceIsNotTwo) {
  machine.Plug("hidraw3", "1-2");
  machine.Plug("hidraw4", "1-2");
  EXPECT_THAT(Codes(), ElementsAre("listed-several-times"));
  machine.Plug("hidraw5", "1-3");
  EXPECT_THAT(Codes(), ElementsAre("listed-several-times", "several-keyboards"));
  const std::vector<Diagnosis> diagnoses = Diagnose(machine.surroundings);
  EXPECT_THAT(diagnoses[0].evidence, HasSubstr("is listed 2 times (/dev/hidraw3)"));
  EXPECT_EQ(diagnoses[1].evidence, "2 keyboards are attached.");
}

TEST_F(DoctorCommandTest, IdsThatAreNotHexadecimalAreFound) {
  machine.Plug("hidraw3", "1-2");
  machine.surroundings.vendorText = "1c3e";
  machine.surroundings.productText = "0X2B91";
  EXPECT_THAT(Codes(), ElementsAre());
  machine.surroundings.vendorText = "1c3e!";
  EXPECT_EQ(Only().evidence, "IDC_VID in Config.ini is \"1c3e!\", which counts as 0x1c3e.");
  machine.surroundings.vendorText = "1c3e";
  machine.surroundings.productText = "";
  machine.surroundings.productId = 0;
  EXPECT_EQ(Only().evidence,
            "IDC_PID in Config.ini is \"\", which counts as 0x0000 and opens no keyboard.");
}

TEST_F(DoctorCommandTest, IdsOfMoreThanFourDigitsAreFound) {
  machine.Plug("hidraw3", "1-2");
  machine.surroundings.vendorText = "0x001c3e";
  EXPECT_THAT(Codes(), ElementsAre());
  machine.surroundings.vendorText = "0x11c3e";
  EXPECT_EQ(Only().evidence, "IDC_VID in Config.ini is \"0x11c3e\", which counts as 0x1c3e.");
}

TEST_F(DoctorCommandTest, TemporaryNamesThatAreTakenAreFound) {
  machine.Plug("hidraw3", "1-2");
  std::filesystem::create_directory(machine.folder.Path("tmp/TEMP1.INI"));
  std::filesystem::create_symlink("nowhere", machine.folder.Path("tmp/TEMP1.BIN"));
  machine.folder.Write("tmp/TEMP2.INI", "x");
  std::filesystem::create_hard_link(machine.folder.Path("tmp/TEMP2.INI"),
                                    machine.folder.Path("tmp/other"));
  const std::vector<Diagnosis> diagnoses = Diagnose(machine.surroundings);
  ASSERT_EQ(diagnoses.size(), 3U);
  EXPECT_THAT(diagnoses[0].evidence, HasSubstr("/TEMP1.INI is not a regular file"));
  EXPECT_THAT(diagnoses[1].evidence, HasSubstr("/TEMP1.BIN is not a regular file"));
  EXPECT_THAT(diagnoses[2].evidence, HasSubstr("/TEMP2.INI has more than one name"));
  EXPECT_EQ(diagnoses[2].cure, "sudo rm -r " + machine.folder.Path("tmp/TEMP2.INI"));
}

TEST_F(DoctorCommandTest, ATemporaryFileOfSomebodyElseIsFound) {
  machine.Plug("hidraw3", "1-2");
  machine.folder.Write("tmp/TEMP2.BIN", "x");
  machine.surroundings.user++;
  EXPECT_EQ(Only().code, "temporary-name-taken");
  EXPECT_THAT(Only().evidence, HasSubstr("/TEMP2.BIN belongs to "));
}

TEST_F(DoctorCommandTest, AMachineWithoutTheKernelsListsIsBorne) {
  machine.surroundings.sysfs = "/nowhere";
  machine.surroundings.proc = "/nowhere";
  EXPECT_THAT(Codes(), ElementsAre("no-keyboard"));
}

}  // namespace
}  // namespace hollin
