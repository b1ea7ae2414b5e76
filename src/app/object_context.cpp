// SPDX-License-Identifier: MIT
#include "app/object_context.h"

#include <QUndoCommand>
#include <algorithm>
#include <utility>

#include "app/object_model.h"
#include "app/store_coordinator.h"

namespace hollin {

// One object before and after; nothing where there is no such object.
class ObjectContext::Change : public QUndoCommand {
 public:
  Change(ObjectContext& changedContext, ObjectId changedId,
         std::optional<StoredObject> objectBefore, std::optional<StoredObject> objectAfter)
      : context(changedContext),
        id(changedId),
        before(std::move(objectBefore)),
        after(std::move(objectAfter)) {}

  void undo() override { context.Replace(id, before); }
  void redo() override { context.Replace(id, after); }

 private:
  ObjectContext& context;
  ObjectId id;
  std::optional<StoredObject> before, after;
};

ObjectContext::ObjectContext(const StoreCoordinator& storeCoordinator)
    : coordinator(storeCoordinator), objects(storeCoordinator.Objects()) {
  if (!objects.empty()) nextId = objects.rbegin()->first + 1;
}

std::optional<ObjectId> ObjectContext::Insert(const QString& entity) {
  if (!coordinator.Model().HasEntity(entity) || objects.contains(nextId)) return std::nullopt;
  const ObjectId id = nextId++;
  Apply(id, StoredObject{entity});
  return id;
}

bool ObjectContext::Set(ObjectId id, const QString& attribute, const QString& text) {
  const auto found = objects.find(id);
  if (found == objects.end() || !FitsXml(text)) return false;
  if (!coordinator.Model().HasAttribute(found->second.entity, attribute)) return false;
  StoredObject changed = found->second;
  changed.values[attribute] = text;
  if (changed != found->second) Apply(id, std::move(changed));
  return true;
}

bool ObjectContext::Remove(ObjectId id) {
  if (!objects.contains(id)) return false;
  Apply(id, std::nullopt);
  return true;
}

bool ObjectContext::commitEditing() {
  const std::vector<ObjectEditor*> asked = editors;  // an editor may end when it is asked
  return std::ranges::all_of(asked, [](ObjectEditor* editor) { return editor->commitEditing(); });
}

bool ObjectContext::save(AppError& error) {
  if (!hasChanges() && !coordinator.IsNew()) return true;
  if (!coordinator.Save(objects, error)) return false;
  undoStack.setClean();
  return true;
}

void ObjectContext::Apply(ObjectId id, std::optional<StoredObject> after) {
  const auto found = objects.find(id);
  std::optional<StoredObject> before;
  if (found != objects.end()) before = found->second;
  undoStack.push(new Change(*this, id, std::move(before), std::move(after)));  // and redoes it
}

void ObjectContext::Replace(ObjectId id, const std::optional<StoredObject>& object) {
  if (object) {
    objects[id] = *object;
  } else {
    objects.erase(id);
  }
}

}  // namespace hollin
