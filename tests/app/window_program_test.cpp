// SPDX-License-Identifier: MIT
// The real program on a display of its own, with the keyboard in software behind the stand-in for
// hidapi.
#include <gtest/gtest.h>

#include <csignal>
#include <cstring>
#include <filesystem>
#include <optional>
#include <sstream>

#include "base/file.h"
#include "package/package_writer.h"
#include "tests/app/desktop.h"
#include "tests/app/system_bus.h"
#include "tests/support/eventually.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/simulator_process.h"
#include "tests/support/temp_files.h"
#include "tests/support/temp_folder.h"

namespace hollin {
namespace {

constexpr const char* kProgram = HOLLIN_BIN_DIR "/hollin";
constexpr size_t kFlashSize = 1024;
constexpr size_t kImageSize = 1000;  // of blocks of 256 bytes

Bytes Image() { return Counting(kImageSize, 7); }
Bytes FlashWithImage() { return Image() + Filled(kFlashSize - kImageSize, 0xFF); }

Bytes PackageOf(std::vector<PackContents> packs) {
  Bytes file;
  EXPECT_EQ(
      WritePackage(
          {.productModel = "TS30", .firmwareVersion = "V1", .keys = {}, .packs = std::move(packs)},
          file),
      PackRefusal::kNone);
  return file;
}

Bytes SamplePackage() {
  const std::string description =
      "[Chip Info]\nChip Size=1K\n[Transmission Info]\nData Length=256\n";
  const Bytes image = Image();
  return PackageOf({{.dataType = "A1", .description = ViewOf(description), .image = image}});
}

FileContents Example(const std::string& name) {
  FileContents file;
  EXPECT_TRUE(ReadWholeFile(HOLLIN_EXAMPLES_DIR "/" + name, file));
  return file;
}

class WindowProgramTest : public ::testing::Test {
 protected:
  void AttachKeyboard(std::vector<std::string> options = {}) {
    options.insert(options.end(), {"--option", "a1.size=1K"});
    options.insert(options.end(), {"--option", "a1.file=" + folder.Path("flash")});
    keyboard.emplace(bus, options);
  }
  void Start(const std::vector<std::string>& command) {
    auto environment = bus.Environment();
    environment.push_back(desktop.Environment());
    environment.emplace_back("QT_QPA_PLATFORM", "xcb");
    environment.emplace_back("DBUS_SESSION_BUS_ADDRESS", "disabled:");
    environment.emplace_back("XDG_DATA_HOME", folder.Path("data"));
    environment.push_back(systemBus.Environment());
    hollin.emplace(Subprocess::Setup{.command = command, .environment = environment});
    ASSERT_TRUE(Eventually([this] { return desktop.Shows(caption); }));
  }
  void StartWithPackage(const std::string& program = kProgram) {
    Start({program, folder.Write("sample.dat", SamplePackage())});
    ASSERT_TRUE(Eventually([this] { return !Recorded("enumerate").empty(); }));
  }
  // Open has the focus, then Refresh, then Update.
  void PressUpdate() {
    for (const char* key : {"Tab", "Tab", "space"}) desktop.Press(caption, key);
  }
  // An update that never goes on: the keyboard does not answer the first command.
  void StartEndlessUpdate() {
    AttachKeyboard({"--fault", "mute@1"});
    StartWithPackage();
    PressUpdate();
    ASSERT_TRUE(Eventually([this] { return !Recorded("write").empty(); }));
  }
  void ExpectAlert(const std::string& title) {
    EXPECT_TRUE(Eventually([&] { return desktop.Shows(title); }));
  }
  void DismissAlert(const std::string& title) {
    desktop.Press(title, "Return");
    EXPECT_TRUE(Eventually([&] { return !desktop.Shows(title); }));
  }
  void ExpectQuit() {
    EXPECT_EQ(hollin->Wait(), 0);
    EXPECT_FALSE(TempFilesExist());
  }
  [[nodiscard]] std::string DataFolder() const { return folder.Path("data/com.tovari.Hollin"); }
  [[nodiscard]] std::string StoreFile() const { return DataFolder() + "/Hollin.storedata"; }
  // What the program did with hidapi, and its pauses: the lines that begin with that word.
  [[nodiscard]] std::vector<std::string> Recorded(const std::string& word) const {
    std::vector<std::string> lines;
    std::istringstream record(bus.Record());
    for (std::string line; std::getline(record, line);) {
      if (line.starts_with(word)) lines.push_back(line);
    }
    return lines;
  }

  TempFolder folder;
  NoTempFiles noTempFiles;
  SimulatedBus bus;
  SystemBus systemBus;
  Desktop desktop;
  std::string caption = "Varnholt TS30 Firmware Update V2.0.0";
  std::optional<SimulatorProcess> keyboard;
  std::optional<Subprocess> hollin;
};

class WindowProgramSignalTest : public WindowProgramTest,
                                public ::testing::WithParamInterface<int> {};

TEST_F(WindowProgramTest, UpdateWritesThePackageIntoTheKeyboard) {
  AttachKeyboard();
  StartWithPackage();
  EXPECT_TRUE(TempFilesExist());
  PressUpdate();
  ExpectAlert("Information");
  EXPECT_EQ(folder.Read("flash"), FlashWithImage());
  EXPECT_EQ(Recorded("pause"), std::vector<std::string>(6, "pause 0.500000000"));
  DismissAlert("Information");
  hollin->Signal(SIGTERM);
  ExpectQuit();
}

// The A2 chip's second sector is reserved, as are the first and the third of C1. Both held
// something else before.
TEST_F(WindowProgramTest, TwoPacksAreWrittenEachIntoItsFlash) {
  constexpr size_t kChipSize = 0x100000;
  constexpr size_t kSector = 0x10000;
  for (const char* chip : {"a2", "c1"}) folder.Write(chip, Filled(kChipSize, 0x5A));
  keyboard.emplace(bus, std::vector<std::string>{"--option", "a2.file=" + folder.Path("a2"),
                                                 "--option", "c1.file=" + folder.Path("c1")});
  const FileContents a2 = Example("a2-buffer.ini");
  const FileContents c1 = Example("c1.ini");
  const Bytes a2Image = Counting(kSector, 1) + Counting(kSector, 2) + Counting(1000, 3);
  const Bytes c1Image = Counting(kSector, 4) + Counting(777, 5);
  Start({kProgram, folder.Write("two.dat", PackageOf({{"A2", a2.View(), a2Image},
                                                      {"C1", c1.View(), c1Image}}))});
  ASSERT_TRUE(Eventually([this] { return !Recorded("enumerate").empty(); }));
  PressUpdate();
  ExpectAlert("Information");
  EXPECT_TRUE(folder.Read("a2") == Counting(kSector, 1) + Filled(kSector, 0x5A) +
                                       Counting(1000, 3) + Filled(kSector - 1000, 0xFF) +
                                       Filled(kChipSize - 3 * kSector, 0x5A));
  EXPECT_TRUE(folder.Read("c1") == Filled(kSector, 0x5A) + Counting(kSector, 4) +
                                       Filled(kSector, 0x5A) + Counting(777, 5) +
                                       Filled(kSector - 777, 0xFF) +
                                       Filled(kChipSize - 4 * kSector, 0x5A));
}

TEST_F(WindowProgramTest, KeyboardThatRefusesIsAnErrorAndASecondRunHeals) {
  AttachKeyboard({"--fault", "wrong-status@c3"});
  StartWithPackage();
  PressUpdate();
  ExpectAlert("Error");
  DismissAlert("Error");
  PressUpdate();
  ExpectAlert("Information");
  EXPECT_EQ(folder.Read("flash"), FlashWithImage());
}

TEST_F(WindowProgramTest, ClosingTheIdleWindowQuits) {
  StartWithPackage();
  desktop.Close(caption);
  ExpectQuit();
}

TEST_F(WindowProgramTest, ClosingTheUpdatingWindowHidesItAndQuittingStillWorks) {
  StartEndlessUpdate();
  desktop.Close(caption);
  EXPECT_TRUE(Eventually([this] { return !desktop.Shows(caption); }));
  EXPECT_TRUE(TempFilesExist());
  hollin->Signal(SIGTERM);
  ExpectQuit();
}

TEST_F(WindowProgramTest, HiddenWindowComesBackWhenTheKeyboardIsPulled) {
  StartEndlessUpdate();
  desktop.Close(caption);
  EXPECT_TRUE(Eventually([this] { return !desktop.Shows(caption); }));
  keyboard->Signal(SIGUSR1);
  ExpectAlert("Error");
  EXPECT_TRUE(desktop.Shows(caption));
}

TEST_F(WindowProgramTest, MachineIsKeptAwakeWhileTheProgramUpdates) {
  systemBus.StartLogind();
  const auto isHeld = [] { return SystemBus::IsHeldFor("A keyboard is being updated"); };
  StartEndlessUpdate();
  EXPECT_TRUE(Eventually(isHeld));
  keyboard->Signal(SIGUSR1);
  ExpectAlert("Error");
  EXPECT_TRUE(Eventually([&] { return !isHeld(); }));
}

TEST_F(WindowProgramTest, QuittingDuringTheFinalAlertIsClean) {
  AttachKeyboard();
  StartWithPackage();
  PressUpdate();
  ExpectAlert("Information");
  hollin->Signal(SIGTERM);
  ExpectQuit();
}

TEST_F(WindowProgramTest, IgnoredHangupStaysIgnored) {
  Start({"/usr/bin/nohup", kProgram});
  hollin->Signal(SIGHUP);
  desktop.Press(caption, "space");  // and it goes on to do what it is told
  EXPECT_TRUE(Eventually([this] { return desktop.Shows("Open File"); }));
}

TEST_F(WindowProgramTest, PackageThatCannotBeReadIsSaidOverTheShownWindow) {
  Start({kProgram, folder.Path("missing.dat")});
  ExpectAlert("Error");
  DismissAlert("Error");
  EXPECT_TRUE(desktop.Shows(caption));
}

TEST_F(WindowProgramTest, ConfigurationBesideTheBundleGivesCaptionAndIds) {
  std::filesystem::create_directory(folder.Path("Hollin.app"));
  std::filesystem::copy_file(std::filesystem::canonical(kProgram),
                             folder.Path("Hollin.app/hollin"));
  folder.Write("Config.ini",
               "IDC_VID=1234 ; without prefix\nIDC_PID=0x2abcd\nIDS_STRING_CAPTION = My caption");
  caption = "My caption";
  AttachKeyboard({"--vid", "1234", "--pid", "abcd"});
  StartWithPackage(folder.Path("Hollin.app/hollin"));
  PressUpdate();
  ExpectAlert("Information");
}

TEST_F(WindowProgramTest, DesktopIsToldTheProgramsIcon) {
  constexpr size_t kLargest = size_t{128} * 128;
  Start({kProgram});
  EXPECT_TRUE(Eventually([&] { return desktop.HasProperty(caption, "_NET_WM_ICON", kLargest); }));
}

TEST_F(WindowProgramTest, SavingMakesTheStoreAndStartingDoesNot) {
  StartWithPackage();
  EXPECT_FALSE(std::filesystem::exists(folder.Path("data")));
  desktop.Press(caption, "ctrl+s");
  EXPECT_TRUE(Eventually([this] { return std::filesystem::exists(StoreFile()); }));
  desktop.Press(caption, "ctrl+q");
  ExpectQuit();
}

TEST_F(WindowProgramTest, UndoMakesTheDataFolderAndNothingElse) {
  Start({kProgram});
  desktop.Press(caption, "ctrl+z");
  EXPECT_TRUE(Eventually([this] { return std::filesystem::exists(DataFolder()); }));
  desktop.Press(caption, "ctrl+q");
  ExpectQuit();
  EXPECT_FALSE(std::filesystem::exists(StoreFile()));
}

TEST_F(WindowProgramTest, FileInTheDataFoldersPlaceIsPresentedAndQuittingAsksNothing) {
  std::filesystem::create_directory(folder.Path("data"));
  folder.Write("data/com.tovari.Hollin", "");
  StartWithPackage();
  desktop.Press(caption, "ctrl+s");
  const std::string first = "Expected a folder to store application data, found a file .*";
  ExpectAlert(first);
  DismissAlert(first);
  ExpectAlert("Failed to initialize the store");
  DismissAlert("Failed to initialize the store");
  EXPECT_TRUE(desktop.Shows(caption));
  desktop.Press(caption, "ctrl+q");
  ExpectQuit();
}

TEST_F(WindowProgramTest, QuittingInAnAlertOfTheStoreIsClean) {
  std::filesystem::create_directory(folder.Path("data"));
  folder.Write("data/com.tovari.Hollin", "");
  StartWithPackage();
  desktop.Press(caption, "ctrl+s");
  ExpectAlert("Expected a folder to store application data, found a file .*");
  hollin->Signal(SIGTERM);
  ExpectQuit();
}

TEST_F(WindowProgramTest, DisplayThatGoesTakesTheTemporaryFilesAlong) {
  StartWithPackage();
  EXPECT_TRUE(TempFilesExist());
  desktop.Vanish();
  EXPECT_EQ(hollin->Wait(), 1);
  EXPECT_FALSE(TempFilesExist());
}

TEST_F(WindowProgramTest, DisplayThatGoesDuringAnUpdateEndsItWithoutACrash) {
  StartEndlessUpdate();
  desktop.Vanish();
  EXPECT_EQ(hollin->Wait(), 1);
  EXPECT_FALSE(TempFilesExist());
}

TEST_F(WindowProgramTest, WriteIntoABrokenPipeIsNotTheEnd) {
  StartWithPackage();
  hollin->Signal(SIGPIPE);
  hollin->Signal(SIGTERM);
  ExpectQuit();
}

TEST_F(WindowProgramTest, KilledProgramDoesNotKeepTheNextOneOut) {
  StartWithPackage();
  hollin->Signal(SIGKILL);
  EXPECT_EQ(hollin->Wait(), -SIGKILL);
  EXPECT_TRUE(TempFilesExist());
  Start({kProgram, folder.Path("sample.dat")});
  EXPECT_TRUE(Eventually([this] { return Recorded("enumerate").size() == 2; }));
  hollin->Signal(SIGTERM);
  ExpectQuit();
}

TEST_P(WindowProgramSignalTest, SignalQuitsTheIdleProgram) {
  StartWithPackage();
  EXPECT_TRUE(TempFilesExist());
  hollin->Signal(GetParam());
  ExpectQuit();
}

TEST_P(WindowProgramSignalTest, SignalQuitsAnUpdateThatNeverEnds) {
  StartEndlessUpdate();
  hollin->Signal(GetParam());
  ExpectQuit();
}

INSTANTIATE_TEST_SUITE_P(Signals, WindowProgramSignalTest,
                         ::testing::Values(SIGTERM, SIGINT, SIGHUP), [](const auto& test) {
                           return std::string("SIG") + sigabbrev_np(test.param);
                         });

}  // namespace
}  // namespace hollin
