// SPDX-License-Identifier: MIT
// The real programs beside each other: started again, on a bus and without one, and killed.
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <memory>
#include <optional>

#include "package/package_writer.h"
#include "tests/app/desktop.h"
#include "tests/app/session_bus.h"
#include "tests/support/eventually.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/simulator_process.h"
#include "tests/support/temp_files.h"
#include "tests/support/temp_folder.h"

namespace hollin {
namespace {

constexpr const char* kHollin = HOLLIN_BIN_DIR "/hollin";
constexpr const char* kHollinCli = HOLLIN_BIN_DIR "/hollin-cli";
constexpr const char* kCaption = "Varnholt TS30 Firmware Update V2.0.0";
constexpr const char* kBusy = "Another Hollin is at work";
constexpr const char* kTempFile = "/tmp/TEMP1.BIN";

class OneInstanceTest : public ::testing::Test {
 protected:
  using Program = std::unique_ptr<Subprocess>;

  // On `session`, or without any bus.
  [[nodiscard]] Program Run(const std::vector<std::string>& command, bool onBus = true) const {
    auto environment = bus.Environment();
    environment.push_back(desktop.Environment());
    environment.emplace_back("QT_QPA_PLATFORM", "xcb");
    environment.emplace_back("XDG_RUNTIME_DIR", runtime.Path());
    environment.emplace_back("XDG_DATA_HOME", folder.Path("data"));
    if (onBus) {
      environment.push_back(session.Environment());
    } else {
      environment.emplace_back("DBUS_SESSION_BUS_ADDRESS", "");
    }
    environment.insert(environment.end(), more.begin(), more.end());
    return std::make_unique<Subprocess>(
        Subprocess::Setup{.command = command, .environment = environment});
  }
  // A first window, on the bus when it returns.
  [[nodiscard]] Program StartFirst(const std::vector<std::string>& command = {kHollin}) const {
    Program program = Run(command);
    EXPECT_TRUE(Eventually([this] { return desktop.Shows(kCaption); }));
    EXPECT_TRUE(Eventually([this] { return session.Has("com.tovari.Hollin"); }));
    return program;
  }
  [[nodiscard]] Program StartFirstWithoutBus() const {
    Program program = Run({kHollin}, false);
    EXPECT_TRUE(Eventually([this] { return desktop.Shows(kCaption); }));
    return program;
  }
  // An update that never goes on, in a window that the user has closed.
  [[nodiscard]] Program StartHiddenUpdate() {
    keyboard.emplace(bus, std::vector<std::string>{"--fault", "mute@1"});
    Program program = StartFirst({kHollin, Package()});
    EXPECT_TRUE(Eventually([] { return std::filesystem::exists(kTempFile); }));
    for (const char* key : {"Tab", "Tab", "space"}) desktop.Press(kCaption, key);
    EXPECT_TRUE(Eventually([this] { return bus.Record().find("write") != std::string::npos; }));
    desktop.Close(kCaption);
    EXPECT_TRUE(Eventually([this] { return !desktop.Shows(kCaption); }));
    return program;
  }

  [[nodiscard]] std::string Package(const std::string& name = "sample.dat") const {
    const std::string description =
        "[Chip Info]\nChip Size=1K\n[Transmission Info]\nData Length=256\n";
    const Bytes image = Counting(1000, 7);
    Bytes file;
    const PackRefusal refusal = WritePackage(
        {.productModel = "TS30",
         .firmwareVersion = "V1",
         .keys = {},
         .packs = {{.dataType = "A1", .description = ViewOf(description), .image = image}}},
        file);
    EXPECT_EQ(refusal, PackRefusal::kNone);
    return folder.Write(name, file);
  }
  [[nodiscard]] size_t EnumerationCount() const {
    const std::string record = bus.Record();
    size_t count = 0;
    for (size_t at = record.find("enumerate 1"); at != std::string::npos;
         at = record.find("enumerate 1", at + 1)) {
      count++;
    }
    return count;
  }
  static void ExpectQuit(Subprocess& program) {
    program.Signal(SIGTERM);
    EXPECT_EQ(program.Wait(), 0);
    EXPECT_FALSE(std::filesystem::exists(kTempFile));
  }

  TempFolder folder, runtime;
  NoTempFiles noTempFiles;
  SimulatedBus bus;
  SessionBus session;
  Desktop desktop;
  std::vector<std::pair<std::string, std::string>> more;  // of the environment
  std::optional<SimulatorProcess> keyboard;
};

TEST_F(OneInstanceTest, ASecondStartBringsTheHiddenWindowBackAndEnds) {
  const Program first = StartHiddenUpdate();
  EXPECT_EQ(Run({kHollin})->Wait(), 0);
  EXPECT_TRUE(Eventually([this] { return desktop.Shows(kCaption); }));
  ExpectQuit(*first);
}

TEST_F(OneInstanceTest, ASecondStartPassesItsPackageOn) {
  const Program first = StartFirst();
  EXPECT_EQ(Run({kHollin, Package()})->Wait(), 0);
  EXPECT_TRUE(Eventually([] { return std::filesystem::exists(kTempFile); }));
  ExpectQuit(*first);
}

TEST_F(OneInstanceTest, APathIsMeantAsItWasGivenInTheFolderOfTheSecondStart) {
  const Program first = StartFirst();
  const std::string name = "\xFF \xC3\xBC%20#.dat";  // not even UTF-8
  static_cast<void>(Package(name));
  const std::string script = "cd '" + folder.Path() + "' && exec " + kHollin + " \"$1\"";
  EXPECT_EQ(Run({"/bin/sh", "-c", script, "sh", name})->Wait(), 0);
  EXPECT_TRUE(Eventually([] { return std::filesystem::exists(kTempFile); }));
  ExpectQuit(*first);
}

TEST_F(OneInstanceTest, APackageIsIgnoredWhileUpdatingAndTheWindowComesBack) {
  const Program first = StartHiddenUpdate();
  const size_t before = EnumerationCount();
  EXPECT_EQ(Run({kHollin, Package("other.dat")})->Wait(), 0);
  EXPECT_TRUE(Eventually([this] { return desktop.Shows(kCaption); }));
  EXPECT_EQ(EnumerationCount(), before);
  ExpectQuit(*first);
}

TEST_F(OneInstanceTest, OfManyStartsAtOnceOneWindowIsLeft) {
  const std::string script =
      std::string(kHollin) + "; code=$?; echo >>'" + folder.Path("ended") + "'; exit $code";
  std::vector<Program> programs;
  programs.reserve(3);
  for (int i = 0; i < 3; i++) programs.push_back(Run({"/bin/sh", "-c", script}));
  EXPECT_TRUE(Eventually([this] {
    std::error_code missing;
    return std::filesystem::file_size(folder.Path("ended"), missing) == 2;
  }));
  EXPECT_TRUE(desktop.Shows(kCaption));
  EXPECT_FALSE(desktop.Shows(kBusy));
  EXPECT_TRUE(session.CallApplication("ActivateAction", {"quit", QVariantList(), QVariantMap()}));
  for (const Program& program : programs) EXPECT_EQ(program->Wait(), 0);
}

TEST_F(OneInstanceTest, DesktopsActivateOpenAndQuit) {
  const Program first = StartHiddenUpdate();
  EXPECT_TRUE(session.CallApplication("Activate", {QVariantMap()}));
  EXPECT_TRUE(Eventually([this] { return desktop.Shows(kCaption); }));
  EXPECT_TRUE(
      session.CallApplication("ActivateAction", {"no-such-action", QVariantList(), QVariantMap()}));
  EXPECT_TRUE(session.CallApplication("ActivateAction", {"quit", QVariantList(), QVariantMap()}));
  EXPECT_EQ(first->Wait(), 0);
  EXPECT_FALSE(std::filesystem::exists(kTempFile));
}

TEST_F(OneInstanceTest, OpenTakesTheFirstFileOfThisComputer) {
  const Program first = StartFirst();
  const QStringList uris = {"http://elsewhere/a", "file://" + QString::fromStdString(Package()),
                            "file:///nowhere"};
  EXPECT_TRUE(session.CallApplication("Open", {uris, QVariantMap()}));
  EXPECT_TRUE(Eventually([] { return std::filesystem::exists(kTempFile); }));
  ExpectQuit(*first);
}

TEST_F(OneInstanceTest, TheCallerOfOpenDoesNotWaitForTheAlert) {
  const Program first = StartFirst();
  EXPECT_EQ(Run({kHollin, folder.Path("missing.dat")})->Wait(), 0);
  EXPECT_TRUE(Eventually([this] { return desktop.Shows("Error"); }));
  ExpectQuit(*first);
}

TEST_F(OneInstanceTest, ARunningProgramIsFoundOnTheBusWithoutTheLockToo) {
  const Program first = StartFirst();
  const TempFolder otherRuntime;
  more = {{"XDG_RUNTIME_DIR", otherRuntime.Path()}};
  EXPECT_EQ(Run({kHollin, Package()})->Wait(), 0);
  EXPECT_TRUE(Eventually([] { return std::filesystem::exists(kTempFile); }));
  ExpectQuit(*first);
}

TEST_F(OneInstanceTest, WithoutABusTheSecondStartWaitsUntilTheFirstEndsEvenKilled) {
  const Program first = StartFirstWithoutBus();
  const Program second = Run({kHollin}, false);
  EXPECT_TRUE(Eventually([this] { return desktop.Shows(kBusy); }));
  first->Signal(SIGKILL);
  EXPECT_EQ(first->Wait(), -SIGKILL);
  EXPECT_TRUE(Eventually([this] { return !desktop.Shows(kBusy) && desktop.Shows(kCaption); }));
  ExpectQuit(*second);
}

TEST_F(OneInstanceTest, WhoDoesNotWaitQuitsWithTheCodeOfTheCommandLine) {
  const Program first = StartFirstWithoutBus();
  const Program second = Run({kHollin}, false);
  EXPECT_TRUE(Eventually([this] { return desktop.Shows(kBusy); }));
  desktop.Press(kBusy, "Return");
  EXPECT_EQ(second->Wait(), 5);
  ExpectQuit(*first);
}

TEST_F(OneInstanceTest, TheWaitingStartSpeaksTheUsersLanguage) {
  const Program first = StartFirstWithoutBus();
  more = {{"LC_ALL", "de_DE.UTF-8"}, {"LANGUAGE", ""}};
  const Program second = Run({kHollin}, false);
  const std::string busy = "Ein anderes Hollin ist bei der Arbeit";
  EXPECT_TRUE(Eventually([&] { return desktop.Shows(busy); }));
  desktop.Press(busy, "Return");
  EXPECT_EQ(second->Wait(), 5);
}

TEST_F(OneInstanceTest, TheWaitingStartHasTheProgramsOwnColours) {
  const Program first = StartFirstWithoutBus();
  const Program second = Run({kHollin}, false);
  EXPECT_TRUE(Eventually([this] { return desktop.Shows(kBusy); }));
  EXPECT_TRUE(Eventually([this] { return desktop.CornerColour(kBusy) == 0xF4F5F8; }));
}

TEST_F(OneInstanceTest, APackageThatComesDuringAnAlertIsOpenedAfterIt) {
  const Program first = StartFirst({kHollin, folder.Path("missing.dat")});
  EXPECT_TRUE(Eventually([this] { return desktop.Shows("Error"); }));
  EXPECT_EQ(Run({kHollin, Package()})->Wait(), 0);
  EXPECT_FALSE(std::filesystem::exists(kTempFile));
  desktop.Press("Error", "Return");
  EXPECT_TRUE(Eventually([] { return std::filesystem::exists(kTempFile); }));
  ExpectQuit(*first);
}

TEST_F(OneInstanceTest, ABusThatIsNotThereIsLikeNone) {
  more = {{"DBUS_SESSION_BUS_ADDRESS", "unix:path=" + folder.Path("nowhere")}};
  const Program first = Run({kHollin});
  EXPECT_TRUE(Eventually([this] { return desktop.Shows(kCaption); }));
  ExpectQuit(*first);
}

TEST_F(OneInstanceTest, TheWindowKeepsTheCommandLineFromUpdating) {
  const Program first = StartFirst();
  const Program update = Run({kHollinCli, "update", Package()});
  EXPECT_EQ(update->Wait(), 5);
  EXPECT_EQ(update->Err(), "another Hollin is at work\nClose it, then try again.\n");
  EXPECT_FALSE(std::filesystem::exists(kTempFile));
  ExpectQuit(*first);
}

TEST_F(OneInstanceTest, AWindowWaitsForTheUpdateOfTheCommandLine) {
  keyboard.emplace(bus, std::vector<std::string>{"--fault", "mute@1"});
  const Program update = Run({kHollinCli, "update", Package()});
  ASSERT_TRUE(update->ReadUntil("Updating to"));
  const Program window = Run({kHollin});
  EXPECT_TRUE(Eventually([this] { return desktop.Shows(kBusy); }));
  EXPECT_FALSE(desktop.Shows(kCaption));
  update->Signal(SIGTERM);
  EXPECT_EQ(update->Wait(), 130);
  EXPECT_TRUE(Eventually([this] { return desktop.Shows(kCaption); }));
  ExpectQuit(*window);
}

}  // namespace
}  // namespace hollin
