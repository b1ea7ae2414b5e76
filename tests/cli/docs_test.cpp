// SPDX-License-Identifier: MIT
// The documents keep their promises: the examples of the command line do what stands below them,
// and every code and schema is there.
#include <fstream>
#include <iterator>
#include <sstream>

#include "cli/finding_words.h"
#include "cli/json.h"
#include "cli/refusal_words.h"
#include "tests/cli/schema.h"
#include "tests/cli/whole_program_test.h"

namespace hollin {
namespace {

std::string Document(const std::string& name) {
  std::ifstream file(HOLLIN_DOCS_DIR "/" + name);
  EXPECT_TRUE(file) << name;
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

struct Example {
  std::string command, output;
};

// The commands in blocks marked as console, each with the lines below it.
std::vector<Example> Examples(const std::string& document) {
  std::vector<Example> examples;
  std::istringstream lines(document);
  bool isInside = false;
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind("```", 0) == 0) {
      isInside = line == "```console";
    } else if (isInside && line.rfind("$ ", 0) == 0) {
      examples.push_back({line.substr(2), ""});
    } else if (isInside) {
      examples.back().output += line + "\n";
    }
  }
  return examples;
}

class DocsTest : public WholeProgramTest {
 protected:
  // As a shell does it in the test's folder, both streams in one.
  std::string Shell(const std::string& command) {
    auto environment = bus.Environment();
    environment.emplace_back("PATH", std::string(HOLLIN_BIN_DIR) + ":" + std::getenv("PATH"));
    Subprocess shell(
        {.command = {"/bin/sh", "-c", "cd " + folder.Path() + "; { " + command + "; } 2>&1"},
         .environment = environment});
    shell.Wait();
    return shell.Out();
  }

  Json Schema(const std::string& name) {
    return Json::parse(Document("schemas/" + name + ".json"));
  }

  void ExpectValid(const std::string& schema, const std::string& text) {
    EXPECT_EQ(SchemaError(Schema(schema), Json::parse(text)), "") << text;
  }
};

TEST_F(DocsTest, TheExamplesOfTheCommandLineDoWhatTheySay) {
  const SimulatorProcess keyboard(bus);
  std::filesystem::copy(HOLLIN_EXAMPLES_DIR "/a1.ini", folder.Path("a1.ini"));
  const std::vector<Example> examples = Examples(Document("command-line.md"));
  EXPECT_GE(examples.size(), 8U);
  for (const Example& example : examples) {
    EXPECT_EQ(Shell(example.command), example.output) << example.command;
  }
}

TEST_F(DocsTest, EveryCodeStandsInTheListOfFindings) {
  const std::string document = Document("findings.md");
  const auto expectRow = [&](std::string_view code) {
    EXPECT_NE(document.find("\n| `" + std::string(code) + "` |"), std::string::npos) << code;
  };
  for (const FindingCode code : words::AllFindingCodes()) expectRow(words::CodeOf(code));
  for (const std::string_view code : words::AllRefusalCodes()) expectRow(code);
}

TEST_F(DocsTest, EveryGoldenDocumentFollowsItsSchema) {
  const Json schema = Schema("inspect");
  size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(HOLLIN_GOLDEN_DIR)) {
    if (entry.path().extension() != ".json") continue;
    std::ifstream file(entry.path());
    EXPECT_EQ(SchemaError(schema, Json::parse(file)), "") << entry.path();
    count++;
  }
  EXPECT_GT(count, 80U);
}

TEST_F(DocsTest, WhatTheProgramWritesFollowsItsSchemas) {
  const SimulatorProcess keyboard(bus);
  const std::string package = MakePackage({Counting(100)});
  ExpectValid("inspect", Run({"inspect", "--json", package}).out);
  ExpectValid("devices", Run({"devices", "--json"}).out);
  ExpectValid("doctor", Run({"doctor", "--json"}).out);
  ExpectValid("text", Run({"--version", "--json"}).out);
  ExpectValid("error", Run({"inspect", "--json"}).out);
  std::istringstream lines(Run({"update", "--json", package}).out);
  for (std::string line; std::getline(lines, line);) ExpectValid("update", line);
  ExpectValid("update", Run({"update", "--json", "/nowhere.dat"}).out);
}

TEST_F(DocsTest, ASchemaIsNotFollowedByEverything) {
  EXPECT_NE(SchemaError(Schema("doctor"), Json::parse(R"({"findings": 1})")), "");
  EXPECT_NE(SchemaError(Schema("doctor"), Json::parse(R"({"findings": [], "more": 1})")), "");
  EXPECT_NE(SchemaError(Schema("doctor"), Json::parse("{}")), "");
  EXPECT_NE(SchemaError(Schema("update"), Json::parse(R"({"event": "nonsense"})")), "");
}

}  // namespace
}  // namespace hollin
