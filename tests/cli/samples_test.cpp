// SPDX-License-Identifier: MIT
// The sample packages: made by the script from the commented descriptions, and good to update with.
#include "tests/cli/whole_program_test.h"

namespace hollin {
namespace {

class SamplesTest : public WholeProgramTest {
 protected:
  SamplesTest() {
    Subprocess script(
        {.command = {HOLLIN_EXAMPLES_DIR "/make-samples", HOLLIN_BIN_DIR, folder.Path("samples")}});
    EXPECT_EQ(script.Wait(), 0) << script.Err();
  }

  Ended Update(const std::string& sample) {
    return Run({"update", folder.Path("samples/" + sample + ".dat")});
  }
};

TEST_F(SamplesTest, A1UpdatesTheKeyboard) {
  const SimulatorProcess keyboard(bus, FlashIn("flash"));
  EXPECT_EQ(Update("a1").exitCode, 0);
  const Bytes image = folder.Read("samples/a1.first.bin");
  EXPECT_EQ(Flash("flash", image.size()), image);
}

TEST_F(SamplesTest, A1AndA1UpdateTheKeyboard) {
  const SimulatorProcess keyboard(bus, FlashIn("flash"));
  EXPECT_EQ(Update("a1-a1").exitCode, 0);
  Bytes expected = folder.Read("samples/a1.first.bin");
  const Bytes second = folder.Read("samples/a1.second.bin");
  std::copy(second.begin(), second.end(), expected.begin());
  EXPECT_EQ(Flash("flash", expected.size()), expected);
}

TEST_F(SamplesTest, AreTheSameEveryTime) {
  const Bytes before = folder.Read("samples/a1-a1.dat");
  Subprocess script(
      {.command = {HOLLIN_EXAMPLES_DIR "/make-samples", HOLLIN_BIN_DIR, folder.Path("samples")}});
  EXPECT_EQ(script.Wait(), 0);
  EXPECT_EQ(folder.Read("samples/a1-a1.dat"), before);
}

}  // namespace
}  // namespace hollin
