// SPDX-License-Identifier: MIT
#include "tests/faults/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <stdexcept>

namespace hollin::faults {
namespace {

constexpr int kLongestRun = 600'000;        // ms
constexpr rlim_t kMostProcessorTime = 300;  // s
constexpr int kThrew = 99;

int Checked(int result, const char* what) {
  if (result < 0) throw std::runtime_error(std::string(what) + " failed");
  return result;
}

[[noreturn]] void BeChild(const std::function<void()>& body, int output) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  const rlimit limit = {kMostProcessorTime, kMostProcessorTime};
  setrlimit(RLIMIT_CPU, &limit);
  dup2(output, STDOUT_FILENO);
  dup2(output, STDERR_FILENO);
  try {
    body();
  } catch (const std::exception& error) {
    std::cerr << error.what() << std::endl;
    _exit(kThrew);
  }
  std::fflush(nullptr);
  _exit(0);
}

}  // namespace

ChildProcess::ChildProcess(const std::function<void()>& body)
    : output(Checked(memfd_create("output", MFD_CLOEXEC), "memfd_create")) {
  std::fflush(nullptr);
  std::array<int, 2> ends{};
  Checked(pipe2(ends.data(), O_CLOEXEC), "pipe2");
  process = Checked(fork(), "fork");
  if (process == 0) {
    close(ends[0]);
    BeChild(body, output);
  }
  close(ends[1]);
  end = ends[0];
}

ChildProcess::~ChildProcess() {
  if (process > 0) {
    Kill();
    waitpid(process, nullptr, 0);
  }
  close(output);
  close(end);
}

bool ChildProcess::HasEnded() const {
  pollfd waited = {.fd = end, .events = 0, .revents = 0};
  return poll(&waited, 1, kLongestRun) > 0;
}

std::string ChildProcess::Await() {
  const bool hasEnded = HasEnded();
  if (!hasEnded) Kill();
  int status = 0;
  waitpid(process, &status, 0);
  process = -1;
  if (!hasEnded) return "hung";
  if (WIFSIGNALED(status)) return "signal " + std::to_string(WTERMSIG(status));
  if (WEXITSTATUS(status) == kThrew) return "threw";
  return WEXITSTATUS(status) == 0 ? "" : "code " + std::to_string(WEXITSTATUS(status));
}

void ChildProcess::Kill() const {
  if (process > 0) kill(process, SIGKILL);
}

std::string ChildProcess::Output() const {
  std::string text;
  std::array<char, 4096> buffer{};
  for (ssize_t count = 1; count > 0; text.append(buffer.data(), static_cast<size_t>(count))) {
    count = pread(output, buffer.data(), buffer.size(), static_cast<off_t>(text.size()));
    if (count < 0) break;
  }
  return text;
}

}  // namespace hollin::faults
