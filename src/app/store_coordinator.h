// SPDX-License-Identifier: MIT
// Stands between an object context and the file that keeps its objects.
#pragma once

#include <string>

#include "app/app_error.h"
#include "app/xml_store.h"

namespace hollin {

class ObjectModel;

class StoreCoordinator {
 public:
  // The model must outlive the coordinator.
  explicit StoreCoordinator(const ObjectModel& objectModel) : model(objectModel) {}

  // Reads the store at `path`, in the file system's own bytes, and saves to it from then on. False,
  // with `error`, when what is there is no such store.
  [[nodiscard]] bool AddXmlStore(const std::string& path, AppError& error);
  [[nodiscard]] bool Save(const StoredObjects& objects, AppError& error) const;

  [[nodiscard]] const ObjectModel& Model() const { return model; }
  // What the store held when it was added.
  [[nodiscard]] const StoredObjects& Objects() const { return objects; }
  // Whether the store's file has yet to be made.
  [[nodiscard]] bool IsNew() const;

 private:
  const ObjectModel& model;
  std::string path;
  StoredObjects objects;
};

}  // namespace hollin
