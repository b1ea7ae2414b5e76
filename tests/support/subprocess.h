// SPDX-License-Identifier: MIT
// Runs a program as a user would: in a process of its own, with its output in pipes or, on request,
// on a terminal. A process that is still there when its object goes is killed.
#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace hollin {

class Subprocess {
 public:
  struct Setup {
    std::vector<std::string> command;                                // the path, then arguments
    std::vector<std::pair<std::string, std::string>> environment{};  // added to the test's own
    bool onTerminal = false;  // all three streams on a new terminal of 80 columns
  };

  explicit Subprocess(const Setup& setup);
  ~Subprocess();
  Subprocess(const Subprocess&) = delete;
  Subprocess& operator=(const Subprocess&) = delete;

  // Reads until the text has been in the output or the program has ended; tells which.
  [[nodiscard]] bool ReadUntil(std::string_view text);

  // Reads to the end and gives the exit code, or the signal that ended the program, negative.
  int Wait();

  void Signal(int signal) const;
  // Waits until the program has halted. False when it ended instead.
  [[nodiscard]] bool AwaitHalt() const;

  // What has been read so far. On a terminal all of it is in Out().
  [[nodiscard]] const std::string& Out() const { return out.text; }
  [[nodiscard]] const std::string& Err() const { return err.text; }

 private:
  struct Stream {
    int file = -1;
    std::string text;
  };

  // Waits for output and reads what there is. False when there will be no more.
  bool ReadSome();
  void ReadFrom(Stream& stream);

  pid_t process = -1;
  Stream out, err;
};

}  // namespace hollin
