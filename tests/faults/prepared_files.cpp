// SPDX-License-Identifier: MIT
#include "tests/faults/prepared_files.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include "tests/faults/users.h"

namespace hollin::faults {
namespace {

using Path = const std::string&;

void Check(int result, Path what) {
  if (result != 0) throw std::runtime_error("cannot prepare " + what);
}

void Put(Path path, mode_t mode, const char* text = "not of the package") {
  std::ofstream(path) << text;
  Check(chmod(path.c_str(), mode), path);
}

void MakeSocket(Path path) {
  sockaddr_un address = {.sun_family = AF_UNIX, .sun_path = {}};
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  const int file = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  Check(bind(file, reinterpret_cast<const sockaddr*>(&address), sizeof address), path);
  close(file);
}

// A stand-in where only root could make one: a link to a device.
void MakeDevice(Path path, const Scene& /*scene*/) {
  if (mknod(path.c_str(), S_IFCHR | 0666, makedev(1, 3)) == 0) return;
  Check(symlink("/dev/null", path.c_str()), path);
}

void MakeFifo(Path path, const Scene& /*scene*/) {
  Check(mkfifo(path.c_str(), 0666), path);
  Check(chmod(path.c_str(), 0666), path);
}

void MakeFolder(Path path, const Scene& /*scene*/) {
  Check(mkdir(path.c_str(), 0777), path);
  Check(chmod(path.c_str(), 0777), path);
}

void MakeFullFolder(Path path, const Scene& scene) {
  MakeFolder(path, scene);
  Put(path + "/inside", 0666);
}

void MakeSparse(Path path, const Scene& /*scene*/) {
  Put(path, 0600);
  Check(truncate(path.c_str(), off_t{1} << 40), path);
}

template <mode_t mode>
void MakeFile(Path path, const Scene& /*scene*/) {
  Put(path, mode);
}

std::string ContentsOf(Path path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace

Scene MakeScene(const std::string& folder) {
  Scene scene{.ownFolder = folder + "/own", .strangersFolder = folder + "/strangers"};
  Check(chmod(folder.c_str(), 0755), folder);
  for (const auto& [path, owner] :
       {std::pair(scene.ownFolder, kUser), std::pair(scene.strangersFolder, kStranger)}) {
    Check(mkdir(path.c_str(), 0755), path);
    Put(path + "/precious", 0666, "precious");
    Give(path + "/precious", owner);
    Give(path, owner);
  }
  return scene;
}

std::string StateOf(const std::string& path) {
  struct stat status = {};
  if (lstat(path.c_str(), &status) != 0) return "";
  std::ostringstream text;
  text << path << " " << std::oct << status.st_mode << std::dec << " " << status.st_uid << " "
       << status.st_ino;
  std::error_code ignored;
  if (S_ISLNK(status.st_mode)) text << " " << std::filesystem::read_symlink(path, ignored);
  if (!S_ISREG(status.st_mode)) return text.str();
  text << " " << status.st_size << " " << (status.st_size < 4096 ? ContentsOf(path) : "large");
  return text.str();
}

std::vector<std::string> SnapshotOf(const Scene& scene) {
  std::vector<std::string> states;
  for (const std::string& folder : {scene.ownFolder, scene.strangersFolder}) {
    states.push_back(StateOf(folder));
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
      states.push_back(StateOf(entry.path().string()));
    }
  }
  std::ranges::sort(states);
  return states;
}

const std::vector<PreparedFile>& PreparedFiles() {
  constexpr bool kOwn = false;
  constexpr bool kStrangers = true;
  constexpr bool kRefused = false;
  constexpr bool kAccepted = true;
  const auto link = [](Path from, Path to) { Check(symlink(to.c_str(), from.c_str()), from); };
  const auto name = [](Path from, Path to) { Check(::link(to.c_str(), from.c_str()), from); };
  static const auto linkTo = link;
  static const auto nameFor = name;
  static const std::vector<PreparedFile> files = {
      {"nothing", kOwn, kAccepted, [](Path, const Scene&) {}},
      {"own file", kOwn, kAccepted, MakeFile<0600>},
      {"own file for everybody", kOwn, kAccepted, MakeFile<0666>},
      {"own file that sets the user", kOwn, kAccepted, MakeFile<04755>},
      {"own sparse giant", kOwn, kAccepted, MakeSparse},
      {"own read-only file", kOwn, kRefused, MakeFile<0400>},
      {"own file with two names", kOwn, kRefused,
       [](Path path, const Scene& scene) { nameFor(path, scene.OwnFile()); }},
      {"own link to an own file", kOwn, kRefused,
       [](Path path, const Scene& scene) { linkTo(path, scene.OwnFile()); }},
      {"own link to a stranger's file", kOwn, kRefused,
       [](Path path, const Scene& scene) { linkTo(path, scene.StrangersFile()); }},
      {"own link to nothing", kOwn, kRefused,
       [](Path path, const Scene& scene) { linkTo(path, scene.ownFolder + "/made"); }},
      {"own FIFO", kOwn, kRefused, MakeFifo},
      {"own empty folder", kOwn, kRefused, MakeFolder},
      {"own folder with a file", kOwn, kRefused, MakeFullFolder},
      {"own socket", kOwn, kRefused, [](Path path, const Scene&) { MakeSocket(path); }},
      {"stranger's private file", kStrangers, kRefused, MakeFile<0600>},
      {"stranger's readable file", kStrangers, kRefused, MakeFile<0644>},
      {"stranger's file for everybody", kStrangers, kRefused, MakeFile<0666>},
      {"stranger's link to a stranger's file", kStrangers, kRefused,
       [](Path path, const Scene& scene) { linkTo(path, scene.StrangersFile()); }},
      {"stranger's link to an own file", kStrangers, kRefused,
       [](Path path, const Scene& scene) { linkTo(path, scene.OwnFile()); }},
      {"stranger's link to nothing", kStrangers, kRefused,
       [](Path path, const Scene& scene) { linkTo(path, scene.ownFolder + "/made"); }},
      {"stranger's link to a device", kStrangers, kRefused,
       [](Path path, const Scene&) { linkTo(path, "/dev/null"); }},
      {"second name of a stranger's file", kStrangers, kRefused,
       [](Path path, const Scene& scene) { nameFor(path, scene.StrangersFile()); }},
      {"stranger's FIFO", kStrangers, kRefused, MakeFifo},
      {"stranger's empty folder", kStrangers, kRefused, MakeFolder},
      {"stranger's folder with a file", kStrangers, kRefused, MakeFullFolder},
      {"stranger's socket", kStrangers, kRefused,
       [](Path path, const Scene&) { MakeSocket(path); }},
      {"stranger's device", kStrangers, kRefused, MakeDevice},
  };
  return files;
}

void Prepare(const PreparedFile& file, const std::string& path, const Scene& scene) {
  file.prepare(path, scene);
  struct stat status = {};
  if (lstat(path.c_str(), &status) != 0) return;
  // A second name is the same file, which has its owner.
  if (S_ISREG(status.st_mode) && status.st_nlink > 1) return;
  Give(path, file.isStrangers ? kStranger : kUser);
  if (S_ISREG(status.st_mode)) Check(chmod(path.c_str(), status.st_mode & 07777), path);
}

}  // namespace hollin::faults
