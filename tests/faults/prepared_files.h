// SPDX-License-Identifier: MIT
// What may lie where a temporary file is to be made: files, links, folders and more, of the user's
// own and of a stranger's.
#pragma once

#include <string>
#include <vector>

namespace hollin::faults {

// Where a test's people keep their things.
struct Scene {
  std::string ownFolder, strangersFolder;  // each with a file "precious"
  std::string OwnFile() const { return ownFolder + "/precious"; }
  std::string StrangersFile() const { return strangersFolder + "/precious"; }
};

// Makes both folders, and gives them to their owners.
[[nodiscard]] Scene MakeScene(const std::string& folder);

// All that must stay as it is, with its owner, rights and contents, one text for each.
[[nodiscard]] std::vector<std::string> SnapshotOf(const Scene& scene);
// The same of what lies at a path; empty where nothing does.
[[nodiscard]] std::string StateOf(const std::string& path);

struct PreparedFile {
  const char* name;
  bool isStrangers;  // what lies there
  bool isAccepted;   // the program makes its file in this place
  void (*prepare)(const std::string& path, const Scene& scene);
};
[[nodiscard]] const std::vector<PreparedFile>& PreparedFiles();

// Prepares one, and gives it to its owner.
void Prepare(const PreparedFile& file, const std::string& path, const Scene& scene);

}  // namespace hollin::faults
