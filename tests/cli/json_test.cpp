// SPDX-License-Identifier: MIT
// With --json, standard output holds JSON and nothing else, whatever happens.
#include "cli/json.h"

#include <sstream>

#include "tests/cli/whole_program_test.h"

namespace hollin {
namespace {

class JsonOutputTest : public WholeProgramTest {
 protected:
  // Every line by itself.
  static std::vector<Json> Lines(const std::string& text) {
    std::istringstream stream(text);
    std::vector<Json> lines;
    for (std::string line; std::getline(stream, line);) lines.push_back(Json::parse(line));
    return lines;
  }
};

TEST_F(JsonOutputTest, AnUpdateIsALineForEachEvent) {
  const SimulatorProcess keyboard(bus, FlashIn("flash"));
  const Ended ended = Run({"update", "--json", MakePackage({Counting(10000, 7)})});
  EXPECT_EQ(ended.exitCode, 0);
  EXPECT_EQ(ended.err, "");
  const std::vector<Json> lines = Lines(ended.out);
  ASSERT_EQ(lines.size(), 7U);
  EXPECT_EQ(lines.front()["event"], "start");
  for (size_t i = 0; i < 5; i++) EXPECT_EQ(lines[i + 1]["step"], i);
  EXPECT_EQ(lines.back()["outcome"], "succeeded");
}

TEST_F(JsonOutputTest, OnATerminalItIsTheSame) {
  const SimulatorProcess keyboard(bus);
  const Ended ended = Run({"update", "--json", MakePackage({Counting(100)})}, true);
  EXPECT_EQ(ended.exitCode, 0);
  EXPECT_EQ(Lines(ended.out).size(), 5U) << ended.out;
}

TEST_F(JsonOutputTest, ErrorsAreJsonToo) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> table = {
      {{"--json"}, "usage"},
      {{"update", "--json"}, "usage"},
      {{"inspect", "--json", "a", "b"}, "usage"},
      {{"inspect", "--json", "/nowhere.dat"}, "unreadable"},
      {{"update", "--json", "/nowhere.dat"}, "unreadable"},
      {{"update", "--json", folder.Write("bad.dat", "x")}, "invalid"},
      {{"update", "--json", MakePackage({Counting(100)})}, "no-keyboard"},
  };
  for (const auto& [arguments, code] : table) {
    const Ended ended = Run(arguments);
    const Json json = Json::parse(ended.out);
    EXPECT_EQ(json["error"]["code"], code);
    EXPECT_EQ(json["error"]["exitCode"], ended.exitCode);
    EXPECT_EQ(ended.err, "");
  }
}

// The pauses and the reports of a whole update, counted from outside.
TEST_F(JsonOutputTest, TheShortestDurationIsThatOfAnUpdateWithoutMishap) {
  const SimulatorProcess keyboard(bus);
  const std::string package = MakePackage({Counting(10000, 7), Counting(70)});
  const Json inspection = Json::parse(Run({"inspect", "--json", package}).out);
  EXPECT_EQ(Run({"update", package}).exitCode, 0);
  std::istringstream record(bus.Record());
  uint64_t reports = 0;
  double pauses = 0;
  for (std::string line; std::getline(record, line);) {
    if (line.rfind("write ", 0) == 0 || line.rfind("read ", 0) == 0) reports++;
    if (line.rfind("pause ", 0) == 0) pauses += std::stod(line.substr(6));
  }
  EXPECT_EQ(inspection["shortestDuration"]["reports"], reports);
  EXPECT_NEAR(inspection["shortestDuration"]["pauses"].get<double>(), pauses * 1000, 0.5);
}

}  // namespace
}  // namespace hollin
