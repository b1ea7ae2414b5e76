// SPDX-License-Identifier: MIT
// Reading whole files: regular ones only, whatever they do meanwhile.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <limits>

#include "tests/base/file_test.h"

// The sanitizers would take an allocation that is meant to fail for a bug.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }
extern "C" const char* __tsan_default_options() { return "allocator_may_return_null=1"; }

namespace hollin {
namespace {

// Whatever is moved by pages shows: 251 and their size have nothing in common.
Bytes EverChanging(size_t size) {
  Bytes bytes(size);
  for (size_t i = 0; i < size; i++) bytes[i] = static_cast<uint8_t>(i % 251);
  return bytes;
}

class ReadWholeFileTest : public FileTest {
 protected:
  // What a failed read must leave nothing of.
  ReadWholeFileTest() {
    contents.bytes = std::make_unique<uint8_t[]>(3);
    contents.size = 3;
  }

  [[nodiscard]] bool Read(const std::string& path) { return ReadWholeFile(path, contents); }

  void ExpectRefused(const std::string& path) {
    EXPECT_FALSE(Read(path)) << path;
    EXPECT_EQ(contents.size, 0U);
    EXPECT_EQ(contents.bytes, nullptr);
  }

  // Of the contents, nearly all of them: what lies before the first page does not count.
  void ExpectWholePages(ByteView asked) const {
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    const ByteView all = contents.View();
    EXPECT_EQ(reinterpret_cast<uintptr_t>(asked.data()) % page, 0U);
    EXPECT_LT(static_cast<size_t>(asked.data() - all.data()), page);
    EXPECT_EQ(asked.data() + asked.size(), all.data() + all.size());
  }

  [[nodiscard]] Bytes Contents() const { return {contents.View().begin(), contents.View().end()}; }

  FileContents contents;
};

TEST_F(ReadWholeFileTest, EveryByteIsRead) {
  const Bytes all = Counting(100000);
  ASSERT_TRUE(Read(folder.Write("file", all)));
  EXPECT_EQ(Contents(), all);
}

TEST_F(ReadWholeFileTest, TextAndViewAreTheSameBytes) {
  using namespace std::string_view_literals;
  ASSERT_TRUE(Read(folder.Write("file", "a\0b\r\n"sv)));
  EXPECT_EQ(contents.Text(), "a\0b\r\n"sv);
}

TEST_F(ReadWholeFileTest, AnEmptyFileIsRead) {
  ASSERT_TRUE(Read(folder.Write("file", "")));
  EXPECT_EQ(contents.size, 0U);
  EXPECT_EQ(contents.Text(), "");
}

TEST_F(ReadWholeFileTest, ALinkToAFileIsFollowed) {
  folder.Write("file", "content");
  std::filesystem::create_symlink("file", folder.Path("link"));
  ASSERT_TRUE(Read(folder.Path("link")));
  EXPECT_EQ(contents.Text(), "content");
}

TEST_F(ReadWholeFileTest, AMissingFileIsRefused) {
  ExpectRefused(folder.Path("none"));
  ExpectRefused("");
  std::filesystem::create_symlink("none", folder.Path("link"));
  ExpectRefused(folder.Path("link"));
}

TEST_F(ReadWholeFileTest, AFifoIsRefusedWithoutWaitingForAWriter) {
  ASSERT_EQ(mkfifo(folder.Path("fifo").c_str(), 0600), 0);
  ExpectRefused(folder.Path("fifo"));
  std::filesystem::create_symlink("fifo", folder.Path("link"));
  ExpectRefused(folder.Path("link"));
}

TEST_F(ReadWholeFileTest, AFolderIsRefused) { ExpectRefused(folder.Path()); }

TEST_F(ReadWholeFileTest, ADeviceIsRefused) {
  ExpectRefused("/dev/null");
  ExpectRefused("/dev/zero");
}

TEST_F(ReadWholeFileTest, ASocketIsRefused) {
  const int socketFile = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  const std::string path = folder.Path("socket");
  ASSERT_LT(path.size(), sizeof address.sun_path);
  std::copy(path.begin(), path.end(), address.sun_path);
  ASSERT_EQ(bind(socketFile, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  ExpectRefused(path);
  close(socketFile);
}

TEST_F(ReadWholeFileTest, AFileWithoutReadingRightsIsRefused) {
  chmod(folder.Write("file", "secret").c_str(), 0);
  const OrdinaryUser user(folder);
  ExpectRefused(folder.Path("file"));
}

TEST_F(ReadWholeFileTest, AFileOverTheGivenSizeIsRefused) {
  const std::string path = folder.Write("file", "12345");
  EXPECT_FALSE(ReadWholeFile(path, contents, 4));
  EXPECT_EQ(contents.bytes, nullptr);
  EXPECT_TRUE(ReadWholeFile(path, contents, 5));
  EXPECT_TRUE(ReadWholeFile(path, contents, 6));
  EXPECT_EQ(contents.Text(), "12345");
}

// The rest must be zeros, not what lay in memory.
TEST_F(ReadWholeFileTest, AFileThatShrinksMeanwhileEndsInZeros) {
  const std::string path = folder.Write("file", Filled(10000, 0xAA));
  Calls().onRead = [&path](int file, void* buffer, size_t size) {
    std::fill_n(static_cast<uint8_t*>(buffer), size, uint8_t{0x55});
    EXPECT_EQ(truncate(path.c_str(), 4000), 0);
    return RealRead(file, buffer, size);
  };
  ASSERT_TRUE(Read(path));
  EXPECT_EQ(Contents(), Filled(4000, 0xAA) + Filled(6000, 0x00));
}

TEST_F(ReadWholeFileTest, AFileThatGrowsMeanwhileKeepsItsFirstSize) {
  const std::string path = folder.Write("file", Filled(100, 0xAA));
  Calls().onRead = [this](int file, void* buffer, size_t size) {
    Calls().onRead = {};
    folder.Write("file", Filled(5000, 0xBB));
    return RealRead(file, buffer, size);
  };
  ASSERT_TRUE(Read(path));
  EXPECT_EQ(Contents(), Filled(100, 0xBB));
}

TEST_F(ReadWholeFileTest, ShortAndInterruptedReadsAreContinued) {
  int reads = 0;
  Calls().onRead = [&reads](int file, void* buffer, size_t size) {
    reads++;
    if (reads % 2 == 0) return ssize_t{-EINTR};
    return RealRead(file, buffer, std::min<size_t>(size, 7));
  };
  const Bytes all = Counting(100);
  ASSERT_TRUE(Read(folder.Write("file", all)));
  EXPECT_EQ(Contents(), all);
}

TEST_F(ReadWholeFileTest, AReadErrorIsAFailure) {
  const std::string path = folder.Write("file", "12345");
  Calls().onRead = [](int /*file*/, void* /*buffer*/, size_t /*size*/) { return ssize_t{-EIO}; };
  ExpectRefused(path);
}

TEST_F(ReadWholeFileTest, LargePagesAreAskedForFrom4MebibytesOnAndMayBeRefused) {
  constexpr size_t kFromHere = 4 * 1024 * 1024;
  for (const size_t size : {kFromHere - 1, kFromHere, kFromHere + 1}) {
    const Bytes all = EverChanging(size);
    const std::string path = folder.Write("file", all);
    for (const int answer : {0, -EINVAL}) {
      std::vector<ByteView> asked;
      Calls().onAdvise = [&asked, answer](void* begin, size_t length, int advice) {
        EXPECT_EQ(advice, MADV_HUGEPAGE);
        asked.emplace_back(static_cast<const uint8_t*>(begin), length);
        return answer;
      };
      ASSERT_TRUE(Read(path));
      Calls().onAdvise = {};
      EXPECT_TRUE(Contents() == all) << size;
      ASSERT_EQ(asked.size(), size < kFromHere ? 0U : 1U) << size;
      if (!asked.empty()) ExpectWholePages(asked[0]);
    }
  }
}

TEST_F(ReadWholeFileTest, AFileTooLargeForTheMemoryIsRefused) {
  const int giant = memfd_create("giant", 0);
  ASSERT_GE(giant, 0);
  ASSERT_EQ(ftruncate(giant, off_t{1} << 62), 0);
  ExpectRefused("/proc/self/fd/" + std::to_string(giant));
  close(giant);
}

TEST_F(ReadWholeFileTest, ProgramsStartedMeanwhileDoNotInheritTheFile) {
  bool closes = false;
  Calls().onRead = [&closes](int file, void* buffer, size_t size) {
    closes = (fcntl(file, F_GETFD) & FD_CLOEXEC) != 0;
    return RealRead(file, buffer, size);
  };
  ASSERT_TRUE(Read(folder.Write("file", "12345")));
  EXPECT_TRUE(closes);
}

}  // namespace
}  // namespace hollin
