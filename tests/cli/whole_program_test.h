// SPDX-License-Identifier: MIT
// hollin-cli as it is installed, on keyboards in processes of their own.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "package/package_writer.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/simulator_process.h"
#include "tests/support/temp_folder.h"

namespace hollin {

class WholeProgramTest : public ::testing::Test {
 protected:
  struct Ended {
    int exitCode = 0;
    std::string out, err;
  };

  [[nodiscard]] Subprocess::Setup SetupOf(const std::vector<std::string>& arguments,
                                          bool onTerminal = false) const {
    std::vector<std::string> command = {HOLLIN_BIN_DIR "/hollin-cli"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    auto environment = bus.Environment();
    environment.emplace_back("TERM", "xterm");
    return {.command = command, .environment = environment, .onTerminal = onTerminal};
  }

  [[nodiscard]] Ended Run(const std::vector<std::string>& arguments,
                          bool onTerminal = false) const {
    Subprocess program(SetupOf(arguments, onTerminal));
    const int exitCode = program.Wait();
    return {.exitCode = exitCode, .out = program.Out(), .err = program.Err()};
  }

  // A package with an A1 pack for each image, written in blocks of `blockSize`.
  [[nodiscard]] std::string MakePackage(const std::vector<Bytes>& images,
                                        const std::string& blockSize = "4K") const {
    const std::string description =
        "[Chip Info]\nChip Size=0x100000\n[Transmission Info]\nData Length=" + blockSize + "\n";
    PackageContents contents{
        .productModel = "TS30", .firmwareVersion = "2.0.1", .keys = {"Shift"}, .packs = {}};
    for (const Bytes& image : images) contents.packs.push_back({"A1", ViewOf(description), image});
    Bytes package;
    EXPECT_EQ(WritePackage(contents, package), PackRefusal::kNone);
    return folder.Write("package.dat", package);
  }

  // Has the script build sample packages into the folder "samples": those of these names, or all.
  void MakeSamples(const std::vector<std::string>& names = {}) const {
    std::vector<std::string> command = {HOLLIN_EXAMPLES_DIR "/make-samples", HOLLIN_BIN_DIR,
                                        folder.Path("samples")};
    command.insert(command.end(), names.begin(), names.end());
    Subprocess script({.command = command});
    EXPECT_EQ(script.Wait(), 0) << script.Err();
  }
  [[nodiscard]] Ended UpdateWithSample(const std::string& name) const {
    return Run({"update", folder.Path("samples/" + name + ".dat")});
  }

  // The option that has a keyboard keep its A1 flash in a file of the test's folder.
  [[nodiscard]] std::vector<std::string> FlashIn(const std::string& name) const {
    return {"--option", "a1.file=" + folder.Path(name)};
  }

  // The first bytes of such a flash.
  [[nodiscard]] Bytes Flash(const std::string& name, size_t size) const {
    Bytes bytes = folder.Read(name);
    EXPECT_EQ(bytes.size(), 0x100000U);
    bytes.resize(size);
    return bytes;
  }

  static std::vector<std::string> TempFilesLeft() {
    std::vector<std::string> left;
    for (const char* name : {"TEMP1.INI", "TEMP2.INI", "TEMP1.BIN", "TEMP2.BIN"}) {
      if (std::filesystem::exists(std::string("/tmp/") + name)) left.emplace_back(name);
    }
    return left;
  }

  // What a test that failed before has left is not this one's fault.
  void SetUp() override {
    for (const std::string& name : TempFilesLeft()) std::filesystem::remove("/tmp/" + name);
  }
  void TearDown() override { EXPECT_EQ(TempFilesLeft(), std::vector<std::string>{}); }

  SimulatedBus bus;
  TempFolder folder;
};

}  // namespace hollin
