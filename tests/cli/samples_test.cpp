// SPDX-License-Identifier: MIT
// The sample packages: made by the script from the commented descriptions, and good to update with.
#include <algorithm>
#include <filesystem>

#include "tests/cli/whole_program_test.h"

namespace hollin {
namespace {

class SamplesTest : public WholeProgramTest {
 protected:
  [[nodiscard]] size_t PackagesBuilt() const {
    const std::filesystem::directory_iterator samples(folder.Path("samples"));
    return static_cast<size_t>(std::count_if(begin(samples), end(samples), [](const auto& file) {
      return file.path().extension() == ".dat";
    }));
  }
};

TEST_F(SamplesTest, A1UpdatesTheKeyboard) {
  MakeSamples({"a1"});
  const SimulatorProcess keyboard(bus, FlashIn("flash"));
  EXPECT_EQ(UpdateWithSample("a1").exitCode, 0);
  const Bytes image = folder.Read("samples/a1.first.bin");
  EXPECT_EQ(Flash("flash", image.size()), image);
}

TEST_F(SamplesTest, A1AndA1UpdateTheKeyboard) {
  MakeSamples({"a1-a1"});
  const SimulatorProcess keyboard(bus, FlashIn("flash"));
  EXPECT_EQ(UpdateWithSample("a1-a1").exitCode, 0);
  Bytes expected = folder.Read("samples/a1.first.bin");
  const Bytes second = folder.Read("samples/a1.second.bin");
  std::copy(second.begin(), second.end(), expected.begin());
  EXPECT_EQ(Flash("flash", expected.size()), expected);
}

TEST_F(SamplesTest, AreTheSameEveryTime) {
  MakeSamples({"a1-a1"});
  const Bytes before = folder.Read("samples/a1-a1.dat");
  MakeSamples({"a1-a1"});
  EXPECT_EQ(folder.Read("samples/a1-a1.dat"), before);
}

TEST_F(SamplesTest, AreAllBuiltUnlessSomeAreNamed) {
  MakeSamples({"c1", "a2-word-a2-buffer"});
  EXPECT_EQ(PackagesBuilt(), 2U);
  MakeSamples();
  EXPECT_EQ(PackagesBuilt(), 4U + 16U);
}

TEST_F(SamplesTest, OfAnUnknownNameAreRefused) {
  Subprocess script(
      {.command = {HOLLIN_EXAMPLES_DIR "/make-samples", HOLLIN_BIN_DIR, folder.Path(), "a2"}});
  EXPECT_EQ(script.Wait(), 2);
  EXPECT_THAT(script.Err(), testing::HasSubstr("no such sample: a2"));
}

}  // namespace
}  // namespace hollin
