// SPDX-License-Identifier: MIT
#include "app/process_signals.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <optional>
#include <semaphore>
#include <thread>

#include "tests/support/temp_folder.h"

namespace hollin {
namespace {

bool IsBlocked(int signal) {
  sigset_t blocked;
  sigemptyset(&blocked);
  EXPECT_EQ(pthread_sigmask(SIG_BLOCK, nullptr, &blocked), 0);
  return sigismember(&blocked, signal) == 1;
}

constexpr int kOrdinary[] = {SIGHUP,  SIGINT,  SIGQUIT, SIGUSR1, SIGUSR2,  SIGPIPE, SIGALRM,
                             SIGTERM, SIGCHLD, SIGCONT, SIGTSTP, SIGWINCH, SIGIO,   SIGXFSZ};

TEST(ProcessSignalsTest, AFileSizeLimitIsAShortWriteAndNotTheEnd) {
  const TempFolder folder;
  IgnoreFileSizeSignal();
  const rlimit limit = {10, RLIM_INFINITY};
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  FILE* const file = std::fopen(folder.Path("file").c_str(), "w");
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(write(fileno(file), "0123456789abcdef", 16), 10);
  EXPECT_EQ(write(fileno(file), "a", 1), -1);
  EXPECT_EQ(errno, EFBIG);
  std::fclose(file);
}

TEST(ProcessSignalsTest, AllSignalsAreBlockedUntilTheScopeEnds) {
  for (const int signal : kOrdinary) EXPECT_FALSE(IsBlocked(signal)) << signal;
  {
    const AllSignalsBlocked blocked;
    for (const int signal : kOrdinary) EXPECT_TRUE(IsBlocked(signal)) << signal;
    EXPECT_TRUE(IsBlocked(SIGRTMIN));
    EXPECT_TRUE(IsBlocked(SIGRTMAX));
  }
  for (const int signal : kOrdinary) EXPECT_FALSE(IsBlocked(signal)) << signal;
}

TEST(ProcessSignalsTest, WhatWasBlockedBeforeStaysBlocked) {
  const AllSignalsBlocked outer;
  { const AllSignalsBlocked inner; }
  EXPECT_TRUE(IsBlocked(SIGTERM));
}

TEST(ProcessSignalsTest, ThreadsStartedInTheScopeNeverTakeThem) {
  std::binary_semaphore isScopeOver(0);
  std::optional<AllSignalsBlocked> blocked(std::in_place);
  std::thread worker([&] {
    isScopeOver.acquire();
    for (const int signal : kOrdinary) EXPECT_TRUE(IsBlocked(signal)) << signal;
  });
  blocked.reset();
  isScopeOver.release();
  worker.join();
}

std::atomic<int> handled = 0;
std::atomic<pthread_t> handlingThread;

// A signal to the whole process goes to a thread that takes it, and the worker's reads go on.
TEST(ProcessSignalsTest, ASignalToTheProcessDoesNotInterruptTheWorker) {
  struct sigaction action = {};
  action.sa_handler = [](int) {
    handlingThread = pthread_self();
    handled++;
  };
  ASSERT_EQ(sigaction(SIGUSR1, &action, nullptr), 0);
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  std::atomic<ssize_t> result = 0;
  std::optional<AllSignalsBlocked> blocked(std::in_place);
  std::thread worker([&] {
    char byte = 0;
    result = read(ends[0], &byte, 1);
  });
  blocked.reset();
  EXPECT_EQ(pthread_kill(worker.native_handle(), SIGUSR1), 0);  // stays pending
  EXPECT_EQ(kill(getpid(), SIGUSR1), 0);
  EXPECT_EQ(write(ends[1], "x", 1), 1);
  worker.join();
  EXPECT_EQ(result, 1);
  EXPECT_EQ(handled, 1);
  EXPECT_TRUE(pthread_equal(handlingThread, pthread_self()));
}

}  // namespace
}  // namespace hollin
