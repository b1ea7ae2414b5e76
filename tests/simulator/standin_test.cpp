// SPDX-License-Identifier: MIT
// The whole way: a program that is linked with the real hidapi, the shared stand-in in front of it,
// and simulators in processes of their own.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "simulator/socket_file.h"

namespace hollin::simulator {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

using Lines = std::vector<std::string>;

// As reports end in the log.
std::string Zeros(size_t count) {
  std::string text;
  while (count-- > 0) text += " 00";
  return text;
}

// A program with pipes to its input and from its output.
class Process {
 public:
  Process(const Lines& command, const std::map<std::string, std::string>& environment) {
    int in[2];
    int out[2];
    if (pipe(in) != 0 || pipe(out) != 0) return;
    process = fork();
    if (process == 0) Become(command, environment, in[0], out[1], {in[1], out[0]});
    close(in[0]);
    close(out[1]);
    input = in[1];
    output = fdopen(out[0], "r");
  }
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  ~Process() {
    if (status == kRunning) kill(process, SIGKILL);
    Wait();
    fclose(output);
  }

  // The next line, empty at the end.
  std::string Line() {
    char line[4096] = "";
    if (fgets(line, sizeof line, output) == nullptr) return "";
    std::string text = line;
    return text.substr(0, text.find('\n'));
  }
  Lines Rest() {
    Lines lines;
    for (std::string line = Line(); !line.empty(); line = Line()) lines.push_back(line);
    return lines;
  }
  std::string All() {
    std::string text;
    for (int letter = fgetc(output); letter != EOF; letter = fgetc(output)) {
      text += static_cast<char>(letter);
    }
    return text;
  }
  void Proceed() const { ASSERT_EQ(write(input, "\n", 1), 1); }
  void Signal(int number) const { kill(process, number); }
  // The exit code, or the signal's number plus 128.
  int Wait() {
    if (status != kRunning) return status;
    close(input);
    int raw = 0;
    waitpid(process, &raw, 0);
    status = WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
    return status;
  }
  [[nodiscard]] pid_t Id() const { return process; }

 private:
  static constexpr int kRunning = -1;

  [[noreturn]] static void Become(const Lines& command,
                                  const std::map<std::string, std::string>& environment, int in,
                                  int out, std::initializer_list<int> others) {
    for (int file : others) close(file);
    dup2(in, STDIN_FILENO);
    dup2(out, STDOUT_FILENO);
    for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
    std::vector<char*> arguments;
    for (const std::string& argument : command)
      arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    execv(arguments[0], arguments.data());
    _exit(127);
  }

  pid_t process = -1;
  int input = -1;
  FILE* output = nullptr;
  int status = kRunning;
};

class StandinTest : public testing::Test {
 protected:
  StandinTest() {
    std::string pattern = testing::TempDir() + "standin-XXXXXX";
    folder = mkdtemp(pattern.data());
    environment = {{"LD_LIBRARY_PATH", STANDIN_DIRECTORY},
                   {"TS30_SIMULATOR_DIR", Directory()},
                   {"TS30_STANDIN_LOG", folder + "/log"},
                   {"TS30_STANDIN_SKIP_PAUSES", "1"}};
  }
  ~StandinTest() override { std::filesystem::remove_all(folder); }

  // Longer than a socket's address has room for.
  [[nodiscard]] std::string Directory() const { return folder + "/" + std::string(120, 'd'); }

  std::unique_ptr<Process> Simulator(Lines arguments = {}) {
    arguments.insert(arguments.begin(), {SIMULATOR, "--dir", Directory()});
    auto simulator = std::make_unique<Process>(arguments, std::map<std::string, std::string>{});
    EXPECT_THAT(simulator->Line(), StartsWith("ready"));
    return simulator;
  }
  std::unique_ptr<Process> Client(Lines arguments) {
    arguments.insert(arguments.begin(), CLIENT);
    return std::make_unique<Process>(arguments, environment);
  }
  Lines RunClient(const Lines& arguments) {
    const auto client = Client(arguments);
    Lines lines = client->Rest();
    EXPECT_EQ(client->Wait(), 0);
    return lines;
  }
  [[nodiscard]] Lines Log() const {
    std::ifstream file(folder + "/log");
    Lines lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
  }
  [[nodiscard]] Lines Sockets() const {
    Lines names;
    for (const auto& entry : std::filesystem::directory_iterator(Directory())) {
      names.push_back(entry.path().filename());
    }
    return names;
  }

  const std::string mode = "write:510400000000000000010a4d02";
  const std::string modeC1 = "write:510400000000000000010a4d03";
  const std::string end = "write:51040000000000000009000000";
  std::string folder;
  std::map<std::string, std::string> environment;
};

TEST_F(StandinTest, WithoutSimulatorsThereIsNoKeyboard) {
  EXPECT_THAT(RunClient({"enumerate", "open"}), ElementsAre("0 keyboards", "not opened"));
  environment["TS30_SIMULATOR_DIR"] = "";
  EXPECT_THAT(RunClient({"enumerate"}), ElementsAre("0 keyboards"));
}

TEST_F(StandinTest, TwoSimulatorsAreTwoKeyboards) {
  const auto first = Simulator();
  EXPECT_THAT(RunClient({"enumerate", "enumerate-any", "enumerate-other", "open-any"}),
              ElementsAre("1 keyboards", "1 keyboards", "0 keyboards", "not opened"));
  const auto second = Simulator();
  const auto other = Simulator({"--vid", "0x7", "--pid", "FFFF"});
  EXPECT_THAT(RunClient({"enumerate", "enumerate-any"}), ElementsAre("2 keyboards", "3 keyboards"));
}

TEST_F(StandinTest, AMessageIsAnsweredAndEveryCallAndPauseIsLogged) {
  const auto simulator = Simulator();
  EXPECT_THAT(RunClient({"enumerate", "open", mode, "read", "pause", "close", "exit"}),
              ElementsAre("1 keyboards", "opened", "wrote 64", StartsWith("read 64: f1 00")));
  EXPECT_THAT(Log(),
              ElementsAre("enumerate 1c3e 2b91 -> 1", "free-enumeration", "open 1c3e 2b91 -> ok",
                          "write 51 04 00 00 00 00 00 00 00 01 0a 4d 02" + Zeros(51),
                          StartsWith("read 51 00 00 00 00 01 00 00 00 f1 00"), "pause 0.500000000",
                          "close", "exit"));
}

TEST_F(StandinTest, PausesOfAMillisecondAndMoreAreSkippedAndLogged) {
  RunClient({"hour-of-sleep", "hour-of-clock-pause", "hour-of-usleep", "short-pause", "usleep"});
  EXPECT_THAT(Log(), ElementsAre("pause 3600.000000000", "pause 3600.000000000",
                                 "pause 3600.000000000", "pause 0.020000000"));
}

TEST_F(StandinTest, WithoutTheVariablePausesAreLoggedAndKept) {
  environment["TS30_STANDIN_SKIP_PAUSES"] = "0";
  const auto start = std::chrono::steady_clock::now();
  RunClient({"usleep"});
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(20));
  EXPECT_THAT(Log(), ElementsAre("pause 0.020000000"));
}

TEST_F(StandinTest, TheKeyboardIsToldOfSkippedTime) {
  const auto simulator = Simulator({"--option", "c1.erase-time=3000000"});
  const std::string status = "write:5105000000000000000300000000";
  Lines commands = {"open", modeC1,
                    "read", "write:5107000000000000000b000001001000",
                    "read", "write:5105000000000000000200000000",
                    "read", status,
                    "read"};
  commands.insert(commands.end(), 1500, "clock-pause");
  commands.insert(commands.end(), {status, "read"});
  const Lines lines = RunClient(commands);
  EXPECT_EQ(lines[lines.size() - 3], "read 64: 03 00 00 00 00 00 00 00 00 00 00");
  EXPECT_EQ(lines.back(), "read 64: 03 00 00 00 00 ff ff 00 00 00 00");
}

TEST_F(StandinTest, AKilledSimulatorEndsReadsAndLeavesANameThatIsIgnored) {
  const auto simulator = Simulator();
  const auto client = Client({"open", "read", mode});
  EXPECT_EQ(client->Line(), "opened");
  simulator->Signal(SIGKILL);
  EXPECT_THAT(client->Rest(), ElementsAre("read -1:", "wrote -1"));
  EXPECT_EQ(simulator->Wait(), 128 + SIGKILL);
  EXPECT_EQ(Sockets().size(), 1U);
  EXPECT_THAT(RunClient({"enumerate", "open"}), ElementsAre("0 keyboards", "not opened"));
}

TEST_F(StandinTest, TheNameGoesWithTheSimulator) {
  for (int number : {SIGTERM, SIGINT}) {
    const auto simulator = Simulator();
    EXPECT_EQ(Sockets(), Lines{"ts30-1c3e-2b91-" + std::to_string(simulator->Id()) + ".socket"});
    simulator->Signal(number);
    EXPECT_EQ(simulator->Wait(), 0);
    EXPECT_THAT(Sockets(), IsEmpty());
  }
}

TEST_F(StandinTest, SignalsUnplugAndReplugTheKeyboard) {
  const auto simulator = Simulator({"--verbose"});
  const auto client = Client({"open", "read", mode, "close", "wait", "enumerate", "wait",
                              "enumerate", "open", mode, "read"});
  EXPECT_EQ(client->Line(), "opened");
  EXPECT_EQ(simulator->Line(), "opened");
  simulator->Signal(SIGUSR1);
  EXPECT_EQ(client->Line(), "read -1:");
  EXPECT_EQ(client->Line(), "wrote -1");
  EXPECT_EQ(simulator->Line(), "unplugged");
  client->Proceed();
  EXPECT_EQ(client->Line(), "0 keyboards");
  simulator->Signal(SIGUSR2);
  EXPECT_EQ(simulator->Line(), "plugged in");
  client->Proceed();
  EXPECT_THAT(client->Rest(),
              ElementsAre("1 keyboards", "opened", "wrote 64", StartsWith("read 64: f1")));
}

TEST_F(StandinTest, EveryOpenGetsEveryReportAndANewOneBeginsEmpty) {
  const auto simulator = Simulator();
  const auto listener = Client({"open", "read"});
  EXPECT_EQ(listener->Line(), "opened");
  EXPECT_EQ(RunClient({"open", mode, mode, "close", "open", end, "read"}).back(),
            "read 64: 09 00 00 00 00 00 00 00 00 00 00");
  EXPECT_THAT(listener->Rest(), ElementsAre(StartsWith("read 64: f1")));
}

TEST_F(StandinTest, ASignalEndsABlockingRead) {
  const auto simulator = Simulator();
  EXPECT_THAT(RunClient({"open", "read-interrupted", mode, "read"}),
              ElementsAre("opened", "read -1:", "wrote 64", StartsWith("read 64: f1")));
}

TEST_F(StandinTest, FaultsReachTheProgram) {
  const struct {
    std::string fault;
    Lines lines;
  } table[] = {
      {"open-fails@o1", {"not opened", "opened"}},
      {"short-report=10@r1", {"opened", "wrote 64", "read 10: f1"}},
      {"short-report=0@r1", {"opened", "wrote 64", "read 0:"}},
      {"write-fails@1", {"opened", "wrote -1"}},
      {"read-fails@r1", {"opened", "wrote 64", "read -1:", "read 64: f1"}},
      {"remove-before@1", {"opened", "wrote -1", "read -1:"}},
      {"remove-at@1", {"opened", "wrote 64", "read -1:"}},
      {"remove-after@1", {"opened", "wrote 64", "read 64: f1", "read -1:"}},
  };
  for (const auto& row : table) {
    const auto simulator = Simulator({"--fault", row.fault});
    Lines commands;
    for (const std::string& line : row.lines) {
      if (line == "opened" || line == "not opened") commands.push_back("open");
      if (line.starts_with("wrote")) commands.push_back(mode);
      if (line.starts_with("read")) commands.push_back("read");
    }
    const Lines lines = RunClient(commands);
    ASSERT_EQ(lines.size(), row.lines.size()) << row.fault;
    for (size_t i = 0; i < lines.size(); i++) EXPECT_THAT(lines[i], StartsWith(row.lines[i]));
  }
}

TEST_F(StandinTest, ContentsOutlastTheSimulatorHoweverItEnds) {
  const Lines options = {"--option", "a1.size=64", "--option", "a1.file=" + folder + "/a1"};
  {
    const auto simulator = Simulator(options);
    RunClient({"open", mode, "read", "write:510c000000000000000703000000010041000000000000", "read",
               "write:51010000000000000041", "read", "read"});
    simulator->Signal(SIGKILL);
  }
  std::ifstream file(folder + "/a1", std::ios::binary);
  const std::string contents{std::istreambuf_iterator<char>(file), {}};
  EXPECT_EQ(contents,
            "\xFF\xFF\xFF"
            "A" +
                std::string(60, '\xFF'));
  const auto simulator = Simulator(options);
  EXPECT_EQ(
      RunClient({"open", mode, "read", "write:510a0000000000000008030000000100000000", "read"})
          .back(),
      "read 64: 08 03 00 00 00 01 00 00 00 41 00");
}

TEST_F(StandinTest, TheProgramExplainsItselfAndRefusesWhatItDoesNotKnow) {
  Process help({SIMULATOR, "--help"}, {});
  const std::string text = help.All();
  EXPECT_EQ(help.Wait(), 0);
  EXPECT_THAT(text, HasSubstr("wrong-echo"));
  EXPECT_THAT(text, HasSubstr("a2.sectors"));
  const Lines bad[] = {{},
                       {"--fault", "none@1"},
                       {"--option", "none=1"},
                       {"--vid", "10000"},
                       {"--options", folder + "/none"},
                       {"--option", "a1.file=" + folder},
                       {"--uhid", "--report-descriptor", "round"},
                       {"--uhid", "--usb-gadget"}};
  for (Lines arguments : bad) {
    if (!arguments.empty()) arguments.insert(arguments.end(), {"--dir", Directory()});
    arguments.insert(arguments.begin(), SIMULATOR);
    Process refused(arguments, {});
    EXPECT_EQ(refused.Wait(), 2);
  }
}

TEST(SocketFileTest, ANameTellsIdsAndProcessAndNothingElseIsAName) {
  EXPECT_EQ(SocketName({0x1C3E, 0x2B91, 12}), "ts30-1c3e-2b91-12.socket");
  EXPECT_EQ(ParseSocketName("ts30-1c3e-2b91-12.socket"), (SocketFile{0x1C3E, 0x2B91, 12}));
  for (const char* name : {"", "ts30", "ts30-1c3e-2b91-12", "ts30-1C3E-2b91-12.socket",
                           "ts30-1c3e-2b91-12.socket.", "ts30-1c3e-2b91-012.socket", "x"}) {
    EXPECT_EQ(ParseSocketName(name), std::nullopt) << name;
  }
}

}  // namespace
}  // namespace hollin::simulator
