// SPDX-License-Identifier: MIT
// What kinds of objects the data store may hold: entities and the names of their attributes. Comes
// from the resource "Hollin.momd" in the bundle, an XML file that docs/data-store.md describes.
#pragma once

#include <QString>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>

namespace hollin {

class ObjectModel {
 public:
  // The model in the file at `path`; null when there is none or it is no model.
  [[nodiscard]] static std::unique_ptr<const ObjectModel> Load(const std::string& path);

  explicit ObjectModel(std::map<QString, std::set<QString>> entitiesAndAttributes)
      : entities(std::move(entitiesAndAttributes)) {}

  [[nodiscard]] bool HasEntity(const QString& entity) const { return entities.contains(entity); }
  [[nodiscard]] bool HasAttribute(const QString& entity, const QString& attribute) const;

 private:
  std::map<QString, std::set<QString>> entities;
};

}  // namespace hollin
