// SPDX-License-Identifier: MIT
// Updates on threads of their own, as the window runs them: whoever has heard the last number may
// use the package and the keyboard again at once, though the thread has not ended yet. The thread
// sanitizer sees whether anything is shared.
#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "tests/app/simulated_update_test.h"

namespace hollin {
namespace {

class WorkerThreadTest : public SimulatedUpdateTest {
 protected:
  ~WorkerThreadTest() override {
    for (std::thread& worker : workers) worker.join();
  }

  void Start() {
    workers.emplace_back([this] {
      RunUpdate(datFile, [this](int32_t value) {
        const std::lock_guard lock(mutex);
        progress.push_back(value);
        hasProgressed.notify_one();
      });
    });
  }

  // The numbers of an update, up to the one of its end.
  std::vector<int32_t> AwaitEnd() {
    std::unique_lock lock(mutex);
    const auto hasEnded = [this] { return !progress.empty() && progress.back() < 0; };
    EXPECT_TRUE(hasProgressed.wait_for(lock, std::chrono::seconds(60), hasEnded));
    return std::exchange(progress, {});
  }

  std::mutex mutex;
  std::condition_variable hasProgressed;
  std::vector<int32_t> progress;
  std::vector<std::thread> workers;
};

TEST_F(WorkerThreadTest, SharesNothingOnceItsEndWasHeard) {
  simulator::Keyboard& keyboard = Plug({});
  for (uint8_t run = 0; run < 20; run++) {
    const Bytes image = Filled(200, run);
    ASSERT_TRUE(
        Load("A1", "[Chip Info]\nChip Size=64K\n[Transmission Info]\nData Length=128\n", image));
    ASSERT_EQ(HidDevice::DeviceCount(), 1U);
    Start();
    EXPECT_EQ(AwaitEnd(), (std::vector<int32_t>{0, 1, 2, 3, kUpdateSucceeded}));
    const ByteView written = keyboard.A1().memory.Contents().first(200);
    EXPECT_TRUE(std::equal(written.begin(), written.end(), image.begin(), image.end()));
  }
}

}  // namespace
}  // namespace hollin
