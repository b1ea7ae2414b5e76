// SPDX-License-Identifier: MIT
#include "app/object_model.h"

#include <utility>

#include "app/safe_xml.h"

namespace hollin {
namespace {

using Attributes = std::set<QString>;

bool ReadAttributes(SafeXml& xml, Attributes& attributes) {
  while (xml.NextChild("attribute")) {
    if (!attributes.insert(xml.Attribute("name")).second) return false;
    xml.ExpectNoChild();
  }
  return true;
}

}  // namespace

std::unique_ptr<const ObjectModel> ObjectModel::Load(const std::string& path) {
  SafeXml xml;
  if (!xml.Open(path) || !xml.NextChild("model") || xml.Attribute("version") != "1") return nullptr;
  std::map<QString, Attributes> entities;
  while (xml.NextChild("entity")) {
    const auto [entity, isNew] = entities.try_emplace(xml.Attribute("name"));
    if (!isNew || !ReadAttributes(xml, entity->second)) return nullptr;
  }
  if (!xml.EndsWell()) return nullptr;
  return std::make_unique<const ObjectModel>(std::move(entities));
}

bool ObjectModel::HasAttribute(const QString& entity, const QString& attribute) const {
  const auto found = entities.find(entity);
  return found != entities.end() && found->second.contains(attribute);
}

}  // namespace hollin
