// SPDX-License-Identifier: MIT
// How hollin-cli ends, for scripts that call it. docs/command-line.md lists the codes.
#pragma once

namespace hollin {

enum class ExitCode {
  kDone = 0,
  kFailed = 1,         // a step of the update failed, a file could not be written, or the doctor
                       // found something
  kUsage = 2,          // the arguments make no sense, or ask for what a package cannot hold
  kPackage = 3,        // the package, or a file it is to be made of, is unreadable or invalid, or
                       // has findings where those are an error
  kKeyboard = 4,       // no keyboard, or more than one
  kBusy = 5,           // another Hollin of this user is at work
  kInterrupted = 130,  // ended by Ctrl-C or a signal like it
};

}  // namespace hollin
