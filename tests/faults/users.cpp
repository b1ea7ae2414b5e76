// SPDX-License-Identifier: MIT
#include "tests/faults/users.h"

#include <grp.h>
#include <linux/capability.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <fstream>
#include <stdexcept>

namespace hollin::faults {
namespace {

void WriteLine(const char* path, const std::string& line) { std::ofstream(path) << line; }

// Root may mount as it is, others in a world of users that holds only themselves.
bool EnterOwnMounts() {
  if (IsRoot()) return unshare(CLONE_NEWNS) == 0;
  const std::string user = std::to_string(getuid());
  const std::string group = std::to_string(getgid());
  if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
  WriteLine("/proc/self/setgroups", "deny");
  WriteLine("/proc/self/uid_map", user + " " + user + " 1");
  WriteLine("/proc/self/gid_map", group + " " + group + " 1");
  return true;
}

// Whoever has made a world of users is mighty in it.
void DropCapabilities() {
  __user_cap_header_struct header = {.version = _LINUX_CAPABILITY_VERSION_3, .pid = 0};
  std::array<__user_cap_data_struct, 2> none{};
  if (syscall(SYS_capset, &header, none.data()) != 0) throw std::runtime_error("cannot be weak");
}

}  // namespace

bool IsRoot() { return getuid() == 0; }

bool EnterPrivateTmp(mode_t mode, const std::string& options) {
  if (!EnterOwnMounts()) return false;
  if (mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return false;
  if (mount("tmpfs", "/tmp", "tmpfs", 0, options.c_str()) != 0) return false;
  return chmod("/tmp", mode) == 0;
}

void Become(uid_t user) {
  if (!IsRoot()) return DropCapabilities();
  if (setgroups(0, nullptr) != 0 || setresgid(user, user, user) != 0 ||
      setresuid(user, user, user) != 0) {
    throw std::runtime_error("cannot become another user");
  }
  prctl(PR_SET_PDEATHSIG, SIGKILL);  // has been forgotten with the old user
}

void Give(const std::string& path, uid_t user) {
  if (IsRoot() && lchown(path.c_str(), user, user) != 0) {
    throw std::runtime_error("cannot give away " + path);
  }
}

std::string ProtectionsOfTheKernel() {
  std::string text;
  for (const char* name : {"fifos", "hardlinks", "regular", "symlinks"}) {
    const std::string protection = std::string("protected_") + name;
    std::string value = "unknown";
    std::ifstream("/proc/sys/fs/" + protection) >> value;
    text += protection;
    text += "=";
    text += value;
    text += " ";
  }
  return text;
}

}  // namespace hollin::faults
