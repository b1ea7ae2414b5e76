// SPDX-License-Identifier: MIT
#include "tests/app/program_at_point.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <random>
#include <sstream>

#include "base/file.h"
#include "package/package_writer.h"
#include "tests/support/eventually.h"
#include "tests/support/hex_bytes.h"

namespace hollin {
namespace {

constexpr size_t kAllPoints = 100;
constexpr size_t kImageSize = 20000;
constexpr size_t kChipSize = 0x100000;
constexpr size_t kSector = 0x10000;

std::string Given(const char* name, const std::string& otherwise) {
  const char* const value = std::getenv(name);
  return value == nullptr ? otherwise : value;
}

std::vector<std::string> Words(const std::string& text) {
  std::istringstream stream(text);
  return {std::istream_iterator<std::string>(stream), {}};
}

double Milliseconds(std::chrono::microseconds time) {
  return static_cast<double>(time.count()) / 1000;
}

}  // namespace

bool EventuallyAtLast(const std::function<bool()>& isTrue) {
  constexpr int kPatience = 6;
  for (int i = 0; i < kPatience; i++) {
    if (Eventually(isTrue)) return true;
  }
  return false;
}

ProgramAtPointTest::ProgramAtPointTest() : image(Counting(kImageSize, 7)) {}

void ProgramAtPointTest::TearDown() {
  if (times.empty()) return;
  std::ranges::sort(times);
  std::printf(
      "gone: %zu times, median %.0f ms, longest %.0f ms, %td after more than a second\n",
      times.size(), Milliseconds(times[times.size() / 2]), Milliseconds(times.back()),
      std::ranges::count_if(times, [](auto time) { return time > std::chrono::seconds(1); }));
}

// Quick to erase, so that an update has as many reports on a busy machine as on a quiet one.
std::vector<std::string> ProgramAtPointTest::FlashOf(const PointUpdate& update) const {
  return {"--option", std::string(update.chip) + ".file=" + folder.Path("flash"),
          "--option", "a2.erase-time=0",
          "--option", "c1.erase-time=0"};
}

void ProgramAtPointTest::PlugInKeyboard(const PointUpdate& update, const std::string& fault,
                                        size_t report) {
  keyboard.reset();
  bus.emplace();
  folder.Write("flash", Filled(kChipSize, 0x5A));
  std::vector<std::string> options = FlashOf(update);
  if (report > 0) {
    options.insert(options.end(), {"--fault", fault + "@h" + std::to_string(report)});
  }
  keyboard.emplace(*bus, options);
}

void ProgramAtPointTest::RestartKeyboard(const PointUpdate& update) {
  keyboard.emplace(*bus, FlashOf(update));
}

std::string ProgramAtPointTest::PackageOf(const PointUpdate& update) const {
  FileContents description;
  EXPECT_TRUE(
      ReadWholeFile(std::string(HOLLIN_EXAMPLES_DIR "/") + update.description, description));
  Bytes file;
  const PackRefusal refusal = WritePackage(
      {.productModel = "TS30",
       .firmwareVersion = "V1",
       .keys = {},
       .packs = {{.dataType = update.dataType, .description = description.View(), .image = image}}},
      file);
  EXPECT_EQ(refusal, PackRefusal::kNone);
  return folder.Write("package.dat", file);
}

size_t ProgramAtPointTest::ReportsOf(const PointUpdate& update) {
  PlugInKeyboard(update);
  EXPECT_EQ(UpdateByCommandLine(PackageOf(update)), 0);
  ExpectFlashHoldsImage(update);
  return CountInRecord("write ");
}

std::vector<size_t> ProgramAtPointTest::PointsUpTo(size_t reports) {
  const size_t wanted = std::stoul(Given("HOLLIN_POINTS", "2"));
  const unsigned seed = static_cast<unsigned>(std::stoul(Given("HOLLIN_CAMPAIGN_SEED", "30")));
  std::printf("HOLLIN_CAMPAIGN_SEED=%u HOLLIN_POINTS=%zu, of %zu reports\n", seed, wanted, reports);
  std::vector<size_t> points;
  for (size_t i = 0; i < kAllPoints; i++) {
    points.push_back(1 + i * (reports - 1) / (kAllPoints - 1));
  }
  if (wanted >= kAllPoints) return points;
  std::shuffle(points.begin(), points.end(), std::mt19937(seed));
  points.resize(wanted);
  return points;
}

Subprocess::Setup ProgramAtPointTest::SetupOf(const std::vector<std::string>& command) const {
  auto environment = bus->Environment();
  environment.push_back(desktop.Environment());
  environment.push_back(systemBus.Environment());
  environment.push_back(sessionBus);
  environment.emplace_back("QT_QPA_PLATFORM", "xcb");
  environment.emplace_back("XDG_DATA_HOME", folder.Path("data"));
  return {.command = command, .environment = environment};
}

int ProgramAtPointTest::UpdateByCommandLine(const std::string& package) const {
  return Subprocess(SetupOf({HOLLIN_BIN_DIR "/hollin-cli", "update", package})).Wait();
}

void ProgramAtPointTest::StartWindow(const std::vector<std::string>& arguments) {
  std::vector<std::string> command = Words(Given("HOLLIN_WRAPPER", ""));
  command.emplace_back(HOLLIN_BIN_DIR "/hollin");
  command.insert(command.end(), arguments.begin(), arguments.end());
  window.emplace(SetupOf(command));
}

void ProgramAtPointTest::StartWindowWith(const std::string& package) {
  const size_t before = CountInRecord("enumerate ");
  StartWindow({package});
  ASSERT_TRUE(EventuallyAtLast([&] { return CountInRecord("enumerate ") > before; }));
}

void ProgramAtPointTest::PressUpdate() const { desktop.Press(caption, "ctrl+u"); }

void ProgramAtPointTest::UpdateUntilReport(const std::string& package, size_t report) {
  StartWindowWith(package);
  PressUpdate();
  ASSERT_TRUE(EventuallyAtLast([&] { return ReportIsWritten(report); }));
}

size_t ProgramAtPointTest::CountInRecord(const std::string& lineStart) const {
  const std::string record = "\n" + bus->Record();
  const std::string wanted = "\n" + lineStart;
  size_t count = 0;
  for (size_t at = record.find(wanted); at != std::string::npos; at = record.find(wanted, at + 1)) {
    count++;
  }
  return count;
}

bool ProgramAtPointTest::ReportIsWritten(size_t report) const {
  return CountInRecord("write ") >= report;
}

bool ProgramAtPointTest::IsShown(const std::string& title) const {
  return EventuallyAtLast([&] { return desktop.Shows(title); });
}

void ProgramAtPointTest::ExpectGone(const std::function<void()>& act, int code) {
  const auto before = std::chrono::steady_clock::now();
  act();
  EXPECT_EQ(window->Wait(), code) << window->Err();
  times.push_back(std::chrono::duration_cast<std::chrono::microseconds>(
      std::chrono::steady_clock::now() - before));
  EXPECT_FALSE(TempFilesExist());
}

void ProgramAtPointTest::ExpectFlashHoldsImage(const PointUpdate& update) const {
  Bytes expected = Filled(kChipSize, 0x5A);
  std::fill_n(expected.begin() + static_cast<long>(update.place), kSector, 0xFF);
  std::ranges::copy(image, expected.begin() + static_cast<long>(update.place));
  Bytes flash = folder.Read("flash");
  // A1 has no sectors: it erases what a block needs.
  if (std::string(update.dataType) == "A1") {
    flash.resize(image.size());
    expected.resize(image.size());
  }
  EXPECT_TRUE(flash == expected);
}

}  // namespace hollin
