// SPDX-License-Identifier: MIT
// A reader for the program's own small XML files, which may have been tampered with all the same:
// elements and attributes only. A document type, an entity, text between the elements or an element
// that is not asked for makes the file damaged; nothing is ever fetched or expanded.
#pragma once

#include <QString>
#include <QXmlStreamReader>
#include <cstdint>
#include <string>

namespace hollin {

// In bytes; far more than there is to store. The library compares every attribute of an element
// with every other, so a larger file could keep it busy for long.
inline constexpr uint64_t kLargestXmlFile = 64 << 10;

class SafeXml {
 public:
  // Takes the contents of a regular file of up to that size. False when there is no such file.
  // Paths are in the file system's own bytes.
  [[nodiscard]] bool Open(const std::string& path);

  // Goes on to the next element within the current one, which must have that name. False when the
  // current one has ended (it is then left) or the file is damaged.
  [[nodiscard]] bool NextChild(const char* name);
  // The current element must hold nothing. Leaves it.
  void ExpectNoChild() { static_cast<void>(NextChild("")); }
  // An attribute of the current element; empty where there is none.
  [[nodiscard]] QString Attribute(const char* name) const;

  // At the end: whether all of the file has been read and was sound.
  [[nodiscard]] bool EndsWell();

 private:
  QXmlStreamReader reader;
  bool isDamaged = false;
};

}  // namespace hollin
