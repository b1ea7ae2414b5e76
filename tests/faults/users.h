// SPDX-License-Identifier: MIT
// Several users of one computer, and a /tmp of a test's own. Only root can be other users; whoever
// else runs the tests stays alone, and strangers are pretended (IsRoot tells). For processes that
// end with the test's piece of work: nothing here can be taken back.
#pragma once

#include <sys/types.h>

#include <string>

namespace hollin::faults {

// Two who have no entry anywhere.
inline constexpr uid_t kUser = 54321;
inline constexpr uid_t kStranger = 54322;

[[nodiscard]] bool IsRoot();

// Puts a new /tmp, of this mode and these options of tmpfs, in front of the machine's for this
// process. False where the system does not let it.
[[nodiscard]] bool EnterPrivateTmp(mode_t mode, const std::string& options = "");

// Gives root's rights up, for good.
void Become(uid_t user);

// Makes a file, not what a link leads to, that user's.
void Give(const std::string& path, uid_t user);

// What the kernel does by itself against prepared links and files, as "name=value" and blanks.
[[nodiscard]] std::string ProtectionsOfTheKernel();

}  // namespace hollin::faults
