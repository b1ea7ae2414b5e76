// SPDX-License-Identifier: MIT
#include "tests/support/subprocess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

namespace hollin {
namespace {

constexpr int kLongestSilence = 60'000;  // ms; a program that hangs must not hang the tests

// The files that the new process gets as its streams.
struct Streams {
  int in = -1, out = -1, err = -1;
};

int Checked(int result, const char* what) {
  if (result < 0) throw std::runtime_error(std::string(what) + " failed");
  return result;
}

// The reading end; `writer` goes to the process.
int OpenPipe(int& writer) {
  std::array<int, 2> ends{};
  Checked(pipe2(ends.data(), O_CLOEXEC), "pipe2");
  writer = ends[1];
  return ends[0];
}

// Our end of a new terminal; `other` goes to the process.
int OpenTerminal(int& other) {
  const int terminal = Checked(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC), "posix_openpt");
  Checked(grantpt(terminal), "grantpt");
  Checked(unlockpt(terminal), "unlockpt");
  const winsize size = {.ws_row = 24, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0};
  Checked(ioctl(terminal, TIOCSWINSZ, &size), "TIOCSWINSZ");
  other = Checked(open(ptsname(terminal), O_RDWR | O_NOCTTY | O_CLOEXEC), "open");
  return terminal;
}

std::vector<std::string> Environment(const Subprocess::Setup& setup) {
  std::vector<std::string> variables;
  for (char** variable = environ; *variable != nullptr; variable++) {
    variables.emplace_back(*variable);
  }
  for (const auto& [name, value] : setup.environment) {
    const std::string start = name + "=";
    std::erase_if(variables, [&](const std::string& old) { return old.starts_with(start); });
    variables.push_back(start + value);
  }
  return variables;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

// Runs in the new process, where only calls are allowed that signal handlers may make.
[[noreturn]] void Become(char* const* command, char* const* environment, const Streams& streams,
                         bool onTerminal) {
  setsid();
  for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE}) signal(number, SIG_DFL);
  if (onTerminal) ioctl(streams.in, TIOCSCTTY, 0);
  dup2(streams.in, STDIN_FILENO);
  dup2(streams.out, STDOUT_FILENO);
  dup2(streams.err, STDERR_FILENO);
  execve(command[0], command, environment);
  _exit(127);
}

pid_t Start(const Subprocess::Setup& setup, const Streams& streams) {
  std::vector<std::string> command = setup.command;
  std::vector<std::string> environment = Environment(setup);
  const std::vector<char*> commandPointers = Pointers(command);
  const std::vector<char*> environmentPointers = Pointers(environment);
  const pid_t process = Checked(fork(), "fork");
  if (process == 0) {
    Become(commandPointers.data(), environmentPointers.data(), streams, setup.onTerminal);
  }
  return process;
}

void Close(int& file) {
  if (file >= 0) close(file);
  file = -1;
}

}  // namespace

Subprocess::Subprocess(const Setup& setup) {
  Streams streams;
  if (setup.onTerminal) {
    out.file = OpenTerminal(streams.in);
    streams.out = streams.err = streams.in;
  } else {
    streams.in = Checked(open("/dev/null", O_RDONLY | O_CLOEXEC), "open");
    out.file = OpenPipe(streams.out);
    err.file = OpenPipe(streams.err);
  }
  process = Start(setup, streams);
  close(streams.in);
  if (setup.onTerminal) return;
  close(streams.out);
  close(streams.err);
}

Subprocess::~Subprocess() {
  if (process > 0) {
    kill(process, SIGKILL);
    waitpid(process, nullptr, 0);
  }
  Close(out.file);
  Close(err.file);
}

bool Subprocess::ReadUntil(std::string_view text) {
  const auto isThere = [&] {
    return out.text.find(text) != std::string::npos || err.text.find(text) != std::string::npos;
  };
  while (!isThere()) {
    if (!ReadSome()) return isThere();
  }
  return true;
}

int Subprocess::Wait() {
  while (ReadSome()) {
  }
  int status = 0;
  waitpid(process, &status, 0);
  process = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

void Subprocess::Signal(int signal) const {
  if (process > 0) kill(process, signal);
}

bool Subprocess::AwaitHalt() const {
  siginfo_t info = {};
  const int waited = waitid(P_PID, static_cast<id_t>(process), &info, WSTOPPED | WEXITED | WNOWAIT);
  return waited == 0 && info.si_code == CLD_STOPPED;
}

bool Subprocess::ReadSome() {
  std::array<pollfd, 2> files = {{{.fd = out.file, .events = POLLIN, .revents = 0},
                                  {.fd = err.file, .events = POLLIN, .revents = 0}}};
  if (out.file < 0 && err.file < 0) return false;
  if (Checked(poll(files.data(), files.size(), kLongestSilence), "poll") == 0) {
    throw std::runtime_error("no output for too long: " + out.text + err.text);
  }
  if (files[0].revents != 0) ReadFrom(out);
  if (files[1].revents != 0) ReadFrom(err);
  return true;
}

void Subprocess::ReadFrom(Stream& stream) {
  std::array<char, 4096> buffer{};
  const ssize_t count = read(stream.file, buffer.data(), buffer.size());
  // A terminal answers with an error when the last process on it has gone.
  if (count <= 0) return Close(stream.file);
  stream.text.append(buffer.data(), static_cast<size_t>(count));
}

}  // namespace hollin
