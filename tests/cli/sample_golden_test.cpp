// SPDX-License-Identifier: MIT
// What inspect says of every sample package, letter for letter.
#include <filesystem>

#include "tests/cli/golden.h"
#include "tests/cli/whole_program_test.h"

namespace hollin {
namespace {

class SampleGoldenTest : public WholeProgramTest {
 protected:
  // The output, with the package's path cut down to its name.
  [[nodiscard]] std::string Inspect(const std::string& name,
                                    const std::vector<std::string>& options) const {
    const std::string samples = folder.Path("samples/");
    std::vector<std::string> arguments = {"inspect", samples + name};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const Ended ended = Run(arguments);
    EXPECT_EQ(ended.exitCode, 0) << name;
    EXPECT_EQ(ended.err, "");
    std::string text = ended.out;
    const size_t at = text.find(samples);
    return at == std::string::npos ? text : text.erase(at, samples.size());
  }
};

TEST_F(SampleGoldenTest, OfTextAndJson) {
  MakeSamples();
  size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder.Path("samples"))) {
    if (entry.path().extension() != ".dat") continue;
    const std::string name = entry.path().filename();
    ExpectGolden("sample-" + name + ".txt", Inspect(name, {}));
    ExpectGolden("sample-" + name + ".json", Inspect(name, {"--json"}));
    count++;
  }
  EXPECT_EQ(count, 20U);
}

TEST_F(SampleGoldenTest, AnErrorOnRequestWhereThereAreFindings) {
  MakeSamples({"a1", "c1"});
  EXPECT_EQ(Run({"inspect", "--strict", folder.Path("samples/a1.dat")}).exitCode, 3);
  EXPECT_EQ(Run({"inspect", "--strict", folder.Path("samples/c1.dat")}).exitCode, 0);
}

}  // namespace
}  // namespace hollin
