// SPDX-License-Identifier: MIT
// Two programs of one user must not update at the same time.
#include <csignal>
#include <cstdlib>

#include "app/instance_lock.h"
#include "tests/cli/whole_program_test.h"

namespace hollin {
namespace {

class UpdateLockTest : public WholeProgramTest {
 protected:
  UpdateLockTest() { setenv("XDG_RUNTIME_DIR", bus.RuntimeFolder().c_str(), 1); }

  [[nodiscard]] Subprocess::Setup UpdateSetup() const {
    return SetupOf({"update", MakePackage({Counting(100)})});
  }
};

TEST_F(UpdateLockTest, WhileAnotherHollinIsAtWorkNothingIsTouched) {
  const SimulatorProcess keyboard(bus, FlashIn("flash"));
  InstanceLock window;
  ASSERT_EQ(window.Take(), LockState::kHeld);
  const Ended ended = Run({"update", MakePackage({Counting(100)})});
  EXPECT_EQ(ended.exitCode, 5);
  EXPECT_EQ(ended.out, "");
  EXPECT_EQ(ended.err, "another Hollin is at work\nClose it, then try again.\n");
  EXPECT_EQ(bus.Record(), "");
}

TEST_F(UpdateLockTest, AnUpdateHoldsTheLockUntilItIsKilled) {
  const SimulatorProcess keyboard(bus, {"--fault", "mute@c1"});
  Subprocess program(UpdateSetup());
  ASSERT_TRUE(program.ReadUntil("Updating to"));
  EXPECT_EQ(Run({"update", folder.Path("package.dat")}).exitCode, 5);
  program.Signal(SIGKILL);
  program.Wait();
  InstanceLock lock;
  EXPECT_EQ(lock.Take(), LockState::kHeld);
  for (const std::string& name : TempFilesLeft()) std::filesystem::remove("/tmp/" + name);
}

TEST_F(UpdateLockTest, TheLockIsFreeAfterAnUpdate) {
  const SimulatorProcess keyboard(bus, FlashIn("flash"));
  const std::string package = MakePackage({Counting(100)});
  EXPECT_EQ(Run({"update", package}).exitCode, 0);
  EXPECT_EQ(Run({"update", package}).exitCode, 0);
}

TEST_F(UpdateLockTest, WithNoPlaceForTheLockTheUpdateRunsAllTheSame) {
  const SimulatorProcess keyboard(bus, FlashIn("flash"));
  Subprocess::Setup setup = UpdateSetup();
  setup.environment.emplace_back("XDG_RUNTIME_DIR", "");
  setup.environment.emplace_back("XDG_CACHE_HOME", "/dev/null");
  Subprocess program(setup);
  EXPECT_EQ(program.Wait(), 0);
}

}  // namespace
}  // namespace hollin
