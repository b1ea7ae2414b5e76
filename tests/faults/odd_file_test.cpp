// SPDX-License-Identifier: MIT
// Packages and configurations that are no ordinary files, and packages that change while they are
// read: nothing is waited for, and nothing is sent but what a package holds.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <iostream>
#include <numeric>

#include "tests/faults/child_process.h"
#include "tests/faults/limits.h"
#include "tests/faults/sampling.h"
#include "tests/faults/system_faults.h"
#include "tests/faults/users.h"
#include "tests/faults/whole_program.h"

namespace hollin::faults {
namespace {

constexpr size_t kThreeBlocks = 1;  // of the reference updates
constexpr size_t kMostMemory = size_t{256} << 20;
constexpr size_t kSampleOfChanges = 40;

struct Report {
  int exitCode = -1;
  bool holdsImages = false;
  bool isUntouched = false;
  size_t calls = 0;
};

// Makes something odd at a path that is free; what it throws is a failed test.
struct OddFile {
  const char* name;
  std::function<void(const std::string& path)> make;
};

void Check(int result, const std::string& path) {
  if (result < 0) throw std::runtime_error("cannot make " + path);
}

std::function<void(const std::string&)> LinkTo(const std::string& target) {
  return [target](const std::string& path) { Check(symlink(target.c_str(), path.c_str()), path); };
}

std::function<void(const std::string&)> Sparse(off_t size) {
  return [size](const std::string& path) {
    const int file = memfd_create("giant", 0);  // stays open, for the link to lead there
    Check(ftruncate(file, size), path);
    LinkTo("/proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(file))(path);
  };
}

void MakeFifo(const std::string& path) { Check(mkfifo(path.c_str(), 0600), path); }

// One that somebody writes to.
void MakeFedFifo(const std::string& path) {
  MakeFifo(path);
  const int file = open(path.c_str(), O_RDWR | O_NONBLOCK);
  Check(static_cast<int>(write(file, "IDC_VID=0xdead\n", 15)), path);
}

void MakeFolder(const std::string& path) { Check(mkdir(path.c_str(), 0700), path); }

void MakeSocket(const std::string& path) {
  sockaddr_un address = {.sun_family = AF_UNIX, .sun_path = {}};
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  const int file = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  Check(bind(file, reinterpret_cast<const sockaddr*>(&address), sizeof address), path);
}

void MakeUnreadable(const std::string& path) {
  const int file = open(path.c_str(), O_WRONLY | O_CREAT, 0000);
  Check(file, path);
  close(file);
}

std::vector<OddFile> OddFiles() {
  return {{"nothing", [](const std::string& /*path*/) {}},
          {"a folder", MakeFolder},
          {"a FIFO", MakeFifo},
          {"a FIFO that is fed", MakeFedFifo},
          {"a socket", MakeSocket},
          {"an unreadable file", MakeUnreadable},
          {"a link to itself", [](const std::string& path) { LinkTo(path)(path); }},
          {"a link to nothing", LinkTo("/nothing")},
          {"/dev/null", LinkTo("/dev/null")},
          {"/dev/zero", LinkTo("/dev/zero")},
          {"/dev/full", LinkTo("/dev/full")},
          {"/dev/tty", LinkTo("/dev/tty")},
          {"/proc/self/mem", LinkTo("/proc/self/mem")},
          {"/proc/self/status", LinkTo("/proc/self/status")},
          {"/proc/kcore", LinkTo("/proc/kcore")},
          {"/sys/kernel/mm/transparent_hugepage/enabled",
           LinkTo("/sys/kernel/mm/transparent_hugepage/enabled")},
          {"a sparse file of 10 GB", Sparse(10'000'000'000)},
          {"a sparse file of 16 TiB", Sparse(off_t{1} << 44)},
          {"a sparse file of 4 EiB", Sparse(off_t{1} << 62)}};
}

class OddFileTest : public testing::Test {
 protected:
  void TearDown() override { EXPECT_EQ(WholeProgram::TempFilesLeft(), 0U); }

  // Runs the update in a child without root's rights, behind what `prepare` does there.
  void UpdateAfter(const std::function<void()>& prepare, const std::string& package) {
    Give(program.Folder().Path(), kUser);
    const Shared<Report> report;
    ChildProcess child([&] {
      program.Plug();
      Become(kUser);
      prepare();
      report->exitCode = program.Update(package);
      Disarm();
      report->holdsImages = program.HoldsImages();
      report->isUntouched = program.IsUntouched();
      const auto& counted = Faults().counted;
      report->calls = std::accumulate(counted.begin(), counted.end(), size_t{0}) -
                      counted.at(static_cast<size_t>(Call::kAllocate));
      for (const char* path : kTempFiles) unlink(path);
    });
    EXPECT_EQ(child.Await(), "") << child.Output();
    last = *report;
  }

  WholeProgram program{campaign::ReferenceUpdates().at(kThreeBlocks)};
  const std::string oddPath = program.Folder().Path("odd");
  const std::string configPath = program.Folder().Path("Config.ini");
  Report last;
};

TEST_F(OddFileTest, NoneIsAPackage) {
  for (const OddFile& odd : OddFiles()) {
    SCOPED_TRACE(odd.name);
    UpdateAfter(
        [&] {
          odd.make(oddPath);
          LimitMemory(kMostMemory);
        },
        oddPath);
    EXPECT_EQ(last.exitCode, 3);
    EXPECT_TRUE(last.isUntouched);
    std::filesystem::remove_all(oddPath);
  }
}

TEST_F(OddFileTest, NoneIsAConfiguration) {
  std::vector<OddFile> all = OddFiles();
  const auto add = [&](const char* name, const std::string& text) {
    all.push_back({name, [this, text](const std::string& /*path*/) {
                     program.Folder().Write("Config.ini", text);
                   }});
  };
  std::string tooLong = "IDC_VID=0xdead\n";
  tooLong.append(size_t{4} << 20, ' ');
  add("of more than 4 MiB", tooLong);
  add("not UTF-8", "IDC_VID=0xdead\n\xFF");
  add("a NUL in the key", std::string("\0IDC_VID=0xdead\n", 16));
  add("a byte order mark", "\xEF\xBB\xBFIDC_VID=0xdead\n");
  for (const OddFile& odd : all) {
    SCOPED_TRACE(odd.name);
    UpdateAfter(
        [&] {
          odd.make(configPath);
          LimitMemory(kMostMemory);
        },
        program.PackagePath());
    EXPECT_EQ(last.exitCode, 0);
    EXPECT_TRUE(last.holdsImages);
    std::filesystem::remove_all(configPath);
  }
}

// Counting takes an id of 0 for any device, opening does not.
TEST_F(OddFileTest, AnIdThatIsNoNumberReachesNoOtherDevice) {
  simulator::KeyboardOptions otherDevice = campaign::ReferenceUpdates().at(kThreeBlocks).keyboard;
  otherDevice.vendorId = 0x1234;
  otherDevice.productId = 0x5678;
  for (const char* text : {"IDC_VID=zz\nIDC_PID=zz\n", "IDC_VID= ;\nIDC_PID= ;\n",
                           "IDC_VID=0\nIDC_PID=0\n", "IDC_VID=10000\nIDC_PID=-10000\n"}) {
    SCOPED_TRACE(text);
    UpdateAfter(
        [&] {
          program.Folder().Write("Config.ini", text);
          program.Plug(otherDevice);
        },
        program.PackagePath());
    EXPECT_EQ(last.exitCode, 1);
    EXPECT_TRUE(last.isUntouched);
  }
}

// What becomes of a package at one call of the program.
struct Change {
  size_t call = 0;
  const char* name = nullptr;
  std::function<void(const std::string& path)> make;
};

std::vector<Change> ChangesAt(size_t call) {
  const auto cutTo = [](double part) {
    return [part](const std::string& path) {
      const auto size = static_cast<double>(std::filesystem::file_size(path));
      std::filesystem::resize_file(path, static_cast<uintmax_t>(size * part));
    };
  };
  const auto overwrite = [](const std::string& path) {
    const int file = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    Check(static_cast<int>(pwrite(file, "XXXXXXXX", 8, 20'000)), path);
    close(file);
  };
  return {{call, "emptied", cutTo(0)},
          {call, "cut in half", cutTo(0.5)},
          {call, "cut a little", cutTo(0.999)},
          {call, "grown", cutTo(2)},
          {call, "changed", overwrite},
          {call, "gone", [](const std::string& path) { std::filesystem::remove(path); }}};
}

TEST_F(OddFileTest, APackageMayChangeAtEveryCall) {
  const std::string copy = program.Folder().Path("copy.dat");
  const auto updateWith = [&](const Change& change) {
    std::filesystem::copy_file(program.PackagePath(), copy,
                               std::filesystem::copy_options::overwrite_existing);
    Give(copy, kUser);
    UpdateAfter(
        [&] {
          Faults().interruptedCall = change.call;
          Faults().interruption = [&] { change.make(copy); };
          Arm();
        },
        copy);
  };
  updateWith({});
  std::vector<Change> changes;
  for (size_t call = 1; call <= last.calls; call++) {
    for (Change& change : ChangesAt(call)) changes.push_back(std::move(change));
  }
  Reduce(changes, kSampleOfChanges);
  size_t accepted = 0;
  for (const Change& change : changes) {
    SCOPED_TRACE(std::string(change.name) + " at call " + std::to_string(change.call));
    updateWith(change);
    EXPECT_TRUE(last.exitCode == 0 || last.exitCode == 3) << last.exitCode;
    EXPECT_EQ(last.exitCode == 0, last.holdsImages);
    EXPECT_EQ(last.exitCode == 3, last.isUntouched);
    accepted += last.exitCode == 0 ? 1 : 0;
  }
  std::cout << changes.size() << " changes, " << accepted << " accepted\n";
}

}  // namespace
}  // namespace hollin::faults
