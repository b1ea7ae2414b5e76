// SPDX-License-Identifier: MIT
// The data store's file, "Hollin.storedata": all objects in one XML file, which docs/data-store.md
// describes. It is always replaced as a whole, so that a failed or interrupted save leaves the old
// one.
#pragma once

#include <QString>
#include <map>
#include <string>

#include "app/app_error.h"

namespace hollin {

class ObjectModel;

using ObjectId = quint64;

struct StoredObject {
  QString entity;
  std::map<QString, QString> values = {};  // by attribute

  bool operator==(const StoredObject&) const = default;
};

using StoredObjects = std::map<ObjectId, StoredObject>;

// Reads the file at `path`. A file that is not there holds no objects; false, with `error`, when it
// cannot be read, is damaged, or holds what the model does not know.
[[nodiscard]] bool ReadXmlStore(const std::string& path, const ObjectModel& model,
                                StoredObjects& objects, AppError& error);

// Whether XML can hold the text at all: not control characters, nor halves of characters.
[[nodiscard]] bool FitsXml(const QString& text);

// Replaces the file at `path`. False, with `error`, when the new one did not reach the disk; the
// old one is then as it was.
[[nodiscard]] bool WriteXmlStore(const std::string& path, const StoredObjects& objects,
                                 AppError& error);

}  // namespace hollin
