// SPDX-License-Identifier: MIT
// The objects of the data store as the program works on them: changes stay here, and can be undone,
// until they are saved.
#pragma once

#include <QUndoStack>
#include <optional>
#include <vector>

#include "app/app_error.h"
#include "app/xml_store.h"

namespace hollin {

class StoreCoordinator;

// Somebody who is editing an object and has not handed over what was typed so far.
class ObjectEditor {
 public:
  virtual ~ObjectEditor() = default;
  // Puts the pending edit into the context. False when it cannot, for example because what was
  // typed makes no sense.
  [[nodiscard]] virtual bool commitEditing() = 0;
};

class ObjectContext {
 public:
  // Begins with what the store holds. The coordinator must outlive the context.
  explicit ObjectContext(const StoreCoordinator& storeCoordinator);

  [[nodiscard]] const StoredObjects& Objects() const { return objects; }
  // Each can be undone. They refuse what the model does not know and texts that XML cannot hold.
  [[nodiscard]] std::optional<ObjectId> Insert(const QString& entity);
  [[nodiscard]] bool Set(ObjectId id, const QString& attribute, const QString& text);
  [[nodiscard]] bool Remove(ObjectId id);

  // Owned by the context.
  [[nodiscard]] QUndoStack* undoManager() { return &undoStack; }

  // An editor must tell when it ends, at the latest before it goes.
  void objectDidBeginEditing(ObjectEditor& editor) { editors.push_back(&editor); }
  void objectDidEndEditing(ObjectEditor& editor) { std::erase(editors, &editor); }
  // Asks all editors for their pending edits. False as soon as one cannot.
  [[nodiscard]] bool commitEditing();

  // Whether the objects differ from the saved ones.
  [[nodiscard]] bool hasChanges() const { return !undoStack.isClean(); }
  // Saves the objects when they have changes or have never been saved. False, with `error`, when
  // that fails; the changes are kept then.
  [[nodiscard]] bool save(AppError& error);

 private:
  class Change;

  void Apply(ObjectId id, std::optional<StoredObject> after);
  void Replace(ObjectId id, const std::optional<StoredObject>& object);

  const StoreCoordinator& coordinator;
  StoredObjects objects;
  ObjectId nextId = 1;
  QUndoStack undoStack;
  std::vector<ObjectEditor*> editors;
};

}  // namespace hollin
