// SPDX-License-Identifier: MIT
#include "app/store_coordinator.h"

#include <filesystem>
#include <system_error>

namespace hollin {

bool StoreCoordinator::AddXmlStore(const std::string& newPath, AppError& error) {
  path = newPath;
  return ReadXmlStore(path, model, objects, error);
}

bool StoreCoordinator::Save(const StoredObjects& newObjects, AppError& error) const {
  return WriteXmlStore(path, newObjects, error);
}

bool StoreCoordinator::IsNew() const {
  std::error_code ignored;
  return !std::filesystem::exists(path, ignored);
}

}  // namespace hollin
