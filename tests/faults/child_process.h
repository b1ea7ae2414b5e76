// SPDX-License-Identifier: MIT
// Runs a piece of a test in a child of the test's process, so that a crash, a hang or another user
// stays in there. What the child finds out it leaves in shared memory.
#pragma once

#include <sys/mman.h>
#include <sys/types.h>

#include <functional>
#include <new>
#include <string>

namespace hollin::faults {

// An object that children write to and their parent reads.
template <typename T>
class Shared {
 public:
  Shared()
      : object(new (mmap(nullptr, sizeof(T), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1,
                         0)) T{}) {}
  ~Shared() { munmap(object, sizeof(T)); }
  Shared(const Shared&) = delete;
  Shared& operator=(const Shared&) = delete;

  T& operator*() const { return *object; }
  T* operator->() const { return object; }

 private:
  T* object;
};

class ChildProcess {
 public:
  // Starts `body` with its output kept; the child ends with it, without any clean-up of the test's.
  explicit ChildProcess(const std::function<void()>& body);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  // Waits for the end and says how it was: nothing for a good one, or "signal 11", "hung", "threw".
  // A child that has not ended after ten minutes, or has used half a minute of processor time,
  // hangs.
  [[nodiscard]] std::string Await();
  void Kill() const;

  // What it wrote on both its outputs, once it has ended.
  [[nodiscard]] std::string Output() const;

 private:
  [[nodiscard]] bool HasEnded() const;

  pid_t process = -1;
  int output = -1;
  int end = -1;  // of a pipe that the child holds open
};

}  // namespace hollin::faults
