// SPDX-License-Identifier: MIT
// Updates in which memory runs out once, at any allocation there is: each ends with one code, the
// right one, and with a closed link, and the next one succeeds. HOLLIN_FAILING_ALLOCATIONS says at
// how many of them; script/endurance wants all.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <utility>

#include "app/update_loop.h"
#include "base/log.h"
#include "base/pause.h"
#include "device/hid_device.h"
#include "package/dat_file_examine.h"
#include "simulator/in_process_hidapi.h"
#include "tests/campaign/reference_updates.h"
#include "tests/package/failing_system.h"
#include "tests/support/temp_folder.h"

struct hid_device_;
struct hid_device_info;

namespace hollin::campaign {
namespace {

// The keyboard is in the same process, and has memory enough.
class EnoughMemory {
 public:
  EnoughMemory() : failing(std::exchange(System().failingAllocation, 0)) {}
  ~EnoughMemory() { System().failingAllocation = failing; }
  EnoughMemory(const EnoughMemory&) = delete;
  EnoughMemory& operator=(const EnoughMemory&) = delete;

 private:
  size_t failing;
};

size_t RunsWanted() {
  const char* const given = std::getenv("HOLLIN_FAILING_ALLOCATIONS");
  return given == nullptr ? 50 : std::stoul(given);
}

constexpr size_t kPlenty = 1'000'000'000;

}  // namespace
}  // namespace hollin::campaign

// The linker puts these before the keyboard's own functions.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,readability-identifier-naming)
#define WITH_ENOUGH_MEMORY(result, name, parameters, arguments) \
  extern "C" result __real_##name parameters;                   \
  extern "C" result __wrap_##name parameters {                  \
    const hollin::campaign::EnoughMemory here;                  \
    return __real_##name arguments;                             \
  }
WITH_ENOUGH_MEMORY(hid_device_info*, hid_enumerate, (unsigned short a, unsigned short b), (a, b))
WITH_ENOUGH_MEMORY(void, hid_free_enumeration, (hid_device_info * a), (a))
WITH_ENOUGH_MEMORY(hid_device_*, hid_open, (unsigned short a, unsigned short b, const wchar_t* c),
                   (a, b, c))
WITH_ENOUGH_MEMORY(int, hid_write, (hid_device_ * a, const unsigned char* b, size_t c), (a, b, c))
WITH_ENOUGH_MEMORY(int, hid_read, (hid_device_ * a, unsigned char* b, size_t c), (a, b, c))
WITH_ENOUGH_MEMORY(void, hid_close, (hid_device_ * a), (a))
WITH_ENOUGH_MEMORY(int, hid_exit, (), ())
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,readability-identifier-naming)

namespace hollin::campaign {
namespace {

class ScarceMemoryTest : public testing::TestWithParam<size_t> {
 protected:
  ScarceMemoryTest() {
    hidapi.recordCalls = false;
    HidDevice::vendorId = update.keyboard.vendorId;
    HidDevice::productId = update.keyboard.productId;
    SetLogFunction([](const std::string&) {});
    SetPauseFunction([this](std::chrono::milliseconds length) {
      const EnoughMemory here;
      hidapi.PassTime(length);
    });
  }
  ~ScarceMemoryTest() override {
    System() = {};
    file.DeleteTempFiles();
    SetPauseFunction({});
    SetLogFunction({});
  }

  [[nodiscard]] bool Load() {
    const TempFolder folder;
    return file.OpenDatFile(folder.Write("package.dat", PackageOf(update))) &&
           file.ExamineDatFile();
  }
  // One update in which the allocation of that number fails. False when there are not so many.
  bool RunWithFailing(size_t allocation) {
    hidapi.Reset();
    simulator::Keyboard& keyboard = hidapi.Attach(update.keyboard);
    hidapi.onBlock = [&keyboard] { keyboard.Unplug(); };
    codes.clear();
    codes.reserve(static_cast<size_t>(file.TotalStepCount()) + 1);
    System().failingAllocation = allocation;
    outcome = RunUpdate(file, [this](int32_t value) { codes.push_back(value); });
    const size_t left = std::exchange(System().failingAllocation, 0);
    allocations = allocation - left;
    return left == 0;
  }
  [[nodiscard]] bool HasSucceeded() const {
    return outcome == UpdateOutcome::kSucceeded ||
           outcome == UpdateOutcome::kSucceededUnacknowledged;
  }
  void ExpectOneRightEnd() {
    ASSERT_FALSE(codes.empty());
    EXPECT_EQ(codes.back(), HasSucceeded() ? kUpdateSucceeded : kUpdateFailed);
    EXPECT_EQ(std::ranges::count_if(codes, [](int32_t code) { return code < 0; }), 1);
    EXPECT_TRUE(!HasSucceeded() || codes.size() == static_cast<size_t>(file.TotalStepCount()) + 1);
    EXPECT_FALSE(HidDevice::IsOpen());
    EXPECT_EQ(hidapi.openHandles, 0U);
  }

  const ReferenceUpdate update = ReferenceUpdates()[GetParam()];
  simulator::InProcessHidapi& hidapi = simulator::InProcessHidapi::Instance();
  DatFileExamine file;
  std::vector<int32_t> codes;
  UpdateOutcome outcome{};
  size_t allocations = 0;  // of the last run
};

TEST_P(ScarceMemoryTest, OneFailedAllocationFailsTheUpdateAtMost) {
  ASSERT_TRUE(Load());
  ASSERT_FALSE(RunWithFailing(kPlenty));  // the first makes what stays
  ASSERT_FALSE(RunWithFailing(kPlenty));
  ASSERT_TRUE(HasSucceeded());
  const size_t all = allocations;
  ASSERT_GT(all, 0U);
  const size_t runs = std::min(all, RunsWanted());
  for (size_t run = 0; run < runs; run++) {
    const size_t failing = 1 + run * all / runs;
    SCOPED_TRACE(failing);
    EXPECT_TRUE(RunWithFailing(failing));
    ExpectOneRightEnd();
  }
  EXPECT_FALSE(RunWithFailing(kPlenty));
  EXPECT_TRUE(HasSucceeded());
  std::cout << runs << " of " << all << " allocations failed\n";
}

INSTANTIATE_TEST_SUITE_P(Updates, ScarceMemoryTest, testing::Values<size_t>(0, 2, 5, 7));

}  // namespace
}  // namespace hollin::campaign
