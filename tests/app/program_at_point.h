// SPDX-License-Identifier: MIT
// The ground of the tests that end the programs at many points of an update, and in every alert:
// updates of every kind, a keyboard that falls silent at a point, the window on a display of its
// own, and how long it took until a program was gone.
//
//   HOLLIN_POINTS          how many points of an update are tried; two where nothing is said, 100
//                          are all
//   HOLLIN_CAMPAIGN_SEED   which ones, when they are not all
//   HOLLIN_WRAPPER         a program that the window runs in, with its arguments, such as valgrind
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "tests/app/desktop.h"
#include "tests/app/system_bus.h"
#include "tests/support/simulator_process.h"
#include "tests/support/temp_files.h"
#include "tests/support/temp_folder.h"

namespace hollin {

// An update that the points are of.
struct PointUpdate {
  const char* dataType;
  const char* description;  // among the examples
  const char* chip;         // as the simulator's options name it
  size_t place;             // of the image in the chip
};
inline void PrintTo(const PointUpdate& update, std::ostream* out) { *out << update.dataType; }
inline constexpr PointUpdate kPointUpdates[] = {
    {"A1", "a1.ini", "a1", 0}, {"A2", "a2-buffer.ini", "a2", 0}, {"C1", "c1.ini", "c1", 0x10000}};

// Asks for far longer than anything here should take: in valgrind, on a busy machine, it may.
[[nodiscard]] bool EventuallyAtLast(const std::function<bool()>& isTrue);

class ProgramAtPointTest : public ::testing::Test {
 protected:
  ProgramAtPointTest();
  void TearDown() override;

  // A keyboard with old contents and with that fault at a report of the host, if that is not 0.
  void PlugInKeyboard(const PointUpdate& update, const std::string& fault = "", size_t report = 0);
  // The same keyboard, switched off and on: the flash holds what it held.
  void RestartKeyboard(const PointUpdate& update);
  [[nodiscard]] std::string PackageOf(const PointUpdate& update) const;

  // The reports that the host writes in a whole update.
  [[nodiscard]] size_t ReportsOf(const PointUpdate& update);
  // Numbers of reports, from 1 to the last.
  [[nodiscard]] static std::vector<size_t> PointsUpTo(size_t reports);

  // The command line's update with that package: its exit code.
  [[nodiscard]] int UpdateByCommandLine(const std::string& package) const;
  [[nodiscard]] Subprocess::Setup SetupOf(const std::vector<std::string>& command) const;
  void StartWindow(const std::vector<std::string>& arguments);
  // Starts the window with that package and waits until it has looked for the keyboard.
  void StartWindowWith(const std::string& package);
  void PressUpdate() const;
  // The whole way from the start to a point of the update.
  void UpdateUntilReport(const std::string& package, size_t report);

  [[nodiscard]] size_t CountInRecord(const std::string& lineStart) const;
  [[nodiscard]] bool ReportIsWritten(size_t report) const;
  [[nodiscard]] bool IsShown(const std::string& title) const;

  // What has to hold once `act` has asked the window to go: it ends with that code, the sooner the
  // better, and takes the temporary files along.
  void ExpectGone(const std::function<void()>& act, int code = 0);
  void ExpectFlashHoldsImage(const PointUpdate& update) const;

  const NoTempFiles noTempFiles;
  const Bytes image;
  const std::string caption = "Varnholt TS30 Firmware Update V2.0.0";
  TempFolder folder;
  SystemBus systemBus;
  Desktop desktop;
  std::optional<SimulatedBus> bus{std::in_place};
  std::pair<std::string, std::string> sessionBus{"DBUS_SESSION_BUS_ADDRESS", "disabled:"};
  std::optional<SimulatorProcess> keyboard;
  std::optional<Subprocess> window;

 private:
  [[nodiscard]] std::vector<std::string> FlashOf(const PointUpdate& update) const;

  std::vector<std::chrono::microseconds> times;  // from the wish to the end
};

}  // namespace hollin
