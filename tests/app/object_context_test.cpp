// SPDX-License-Identifier: MIT
#include "app/object_context.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <optional>

#include "app/object_model.h"
#include "app/store_coordinator.h"
#include "tests/support/temp_folder.h"

namespace hollin {
namespace {

class FakeEditor : public ObjectEditor {
 public:
  bool commitEditing() override {
    asked++;
    if (onCommit) onCommit();
    return canCommit;
  }

  bool canCommit = true;
  int asked = 0;
  std::function<void()> onCommit;
};

class ObjectContextTest : public ::testing::Test {
 protected:
  ObjectContextTest() {
    EXPECT_TRUE(coordinator.AddXmlStore(File(), error));
    context.emplace(coordinator);
  }
  [[nodiscard]] std::string File() const { return folder.Path("Hollin.storedata"); }
  [[nodiscard]] StoredObjects Saved() {
    StoredObjects objects;
    EXPECT_TRUE(ReadXmlStore(File(), model, objects, error));
    return objects;
  }

  TempFolder folder;
  AppError error;
  ObjectModel model{{{"Note", {"text", "title"}}, {"Mark", {}}}};
  StoreCoordinator coordinator{model};
  std::optional<ObjectContext> context;
};

TEST_F(ObjectContextTest, BeginsWithoutChanges) {
  EXPECT_EQ(context->Objects(), StoredObjects{});
  EXPECT_FALSE(context->hasChanges());
  EXPECT_FALSE(context->undoManager()->canUndo());
  EXPECT_FALSE(std::filesystem::exists(File()));
}

TEST_F(ObjectContextTest, ChangesAreInTheContextAndNotYetInTheStore) {
  const auto id = context->Insert("Note");
  ASSERT_EQ(id, 1U);
  EXPECT_TRUE(context->hasChanges());
  EXPECT_TRUE(context->Set(*id, "text", "a"));
  EXPECT_EQ(context->Insert("Mark"), 2U);
  const StoredObjects expected = {{1, {.entity = "Note", .values = {{"text", "a"}}}},
                                  {2, {.entity = "Mark"}}};
  EXPECT_EQ(context->Objects(), expected);
  EXPECT_EQ(Saved(), StoredObjects{});
  EXPECT_TRUE(context->save(error));
  EXPECT_FALSE(context->hasChanges());
  EXPECT_EQ(Saved(), expected);
}

TEST_F(ObjectContextTest, WhatTheModelOrXmlDoesNotKnowIsRefused) {
  EXPECT_FALSE(context->Insert("Other"));
  const auto id = context->Insert("Note");
  context->undoManager()->setClean();
  EXPECT_FALSE(context->Set(*id, "other", "a"));
  EXPECT_FALSE(context->Set(*id, "text", QString(QChar(1))));
  EXPECT_FALSE(context->Set(*id + 1, "text", "a"));
  EXPECT_FALSE(context->Remove(*id + 1));
  EXPECT_FALSE(context->hasChanges());
}

TEST_F(ObjectContextTest, EveryChangeCanBeUndoneAndRedone) {
  QUndoStack& undo = *context->undoManager();
  const auto id = context->Insert("Note");
  EXPECT_TRUE(context->Set(*id, "text", "a"));
  EXPECT_TRUE(context->Remove(*id));
  EXPECT_EQ(context->Objects(), StoredObjects{});
  undo.undo();
  EXPECT_EQ(context->Objects().at(1).values.at("text"), "a");
  undo.undo();
  EXPECT_EQ(context->Objects().at(1).values.size(), 0U);
  undo.undo();
  EXPECT_EQ(context->Objects(), StoredObjects{});
  EXPECT_FALSE(context->hasChanges());
  EXPECT_FALSE(undo.canUndo());
  undo.redo();
  undo.redo();
  EXPECT_EQ(context->Objects().at(1).values.at("text"), "a");
  EXPECT_TRUE(context->hasChanges());
}

TEST_F(ObjectContextTest, ValueThatStaysTheSameIsNoChange) {
  const auto id = context->Insert("Note");
  EXPECT_TRUE(context->Set(*id, "text", ""));
  EXPECT_TRUE(context->save(error));
  EXPECT_TRUE(context->Set(*id, "text", ""));
  EXPECT_FALSE(context->hasChanges());
}

TEST_F(ObjectContextTest, UndoingASavedChangeIsAChange) {
  EXPECT_TRUE(context->Insert("Mark"));
  EXPECT_TRUE(context->save(error));
  context->undoManager()->undo();
  EXPECT_TRUE(context->hasChanges());
  context->undoManager()->redo();
  EXPECT_FALSE(context->hasChanges());
}

TEST_F(ObjectContextTest, AnotherStartFindsWhatWasSavedAndGoesOnFromThere) {
  EXPECT_TRUE(context->Insert("Mark"));
  EXPECT_TRUE(context->Insert("Note"));
  EXPECT_TRUE(context->Remove(1));
  EXPECT_TRUE(context->save(error));
  StoreCoordinator nextCoordinator(model);
  ASSERT_TRUE(nextCoordinator.AddXmlStore(File(), error));
  ObjectContext next(nextCoordinator);
  EXPECT_EQ(next.Objects(), (StoredObjects{{2, {.entity = "Note"}}}));
  EXPECT_FALSE(next.hasChanges());
  EXPECT_EQ(next.Insert("Mark"), 3U);
}

TEST_F(ObjectContextTest, AfterTheLargestIdThereIsNoOther) {
  folder.Write("Hollin.storedata",
               "<store version='1'><object id='18446744073709551615' entity='Mark'/>"
               "<object id='0' entity='Mark'/></store>");
  ASSERT_TRUE(coordinator.AddXmlStore(File(), error));
  ObjectContext full(coordinator);
  EXPECT_EQ(full.Insert("Mark"), std::nullopt);
  EXPECT_EQ(full.Objects().size(), 2U);
}

TEST_F(ObjectContextTest, TheFirstSaveMakesTheFileAndALaterOneWritesOnlyChanges) {
  EXPECT_TRUE(context->save(error));
  EXPECT_EQ(Saved(), StoredObjects{});
  ASSERT_TRUE(std::filesystem::exists(File()));
  folder.Write("Hollin.storedata", "as it was");
  EXPECT_TRUE(context->save(error));
  EXPECT_EQ(folder.Read("Hollin.storedata").size(), 9U);
}

TEST_F(ObjectContextTest, AFailedSaveKeepsTheChanges) {
  EXPECT_TRUE(context->Insert("Mark"));
  std::filesystem::create_directory(File());
  EXPECT_FALSE(context->save(error));
  EXPECT_TRUE(context->hasChanges());
  std::filesystem::remove(File());
  EXPECT_TRUE(context->save(error));
  EXPECT_FALSE(context->hasChanges());
}

TEST_F(ObjectContextTest, CommittingAsksTheEditors) {
  EXPECT_TRUE(context->commitEditing());
  FakeEditor editor;
  FakeEditor other;
  context->objectDidBeginEditing(editor);
  context->objectDidBeginEditing(other);
  EXPECT_TRUE(context->commitEditing());
  EXPECT_EQ(editor.asked + other.asked, 2);
  other.canCommit = false;
  EXPECT_FALSE(context->commitEditing());
  context->objectDidEndEditing(other);
  EXPECT_TRUE(context->commitEditing());
  EXPECT_EQ(other.asked, 2);
}

TEST_F(ObjectContextTest, AnEditorMayEndWhenItIsAsked) {
  FakeEditor editor;
  editor.onCommit = [&] {
    EXPECT_TRUE(context->Insert("Mark"));
    context->objectDidEndEditing(editor);
  };
  context->objectDidBeginEditing(editor);
  EXPECT_TRUE(context->commitEditing());
  EXPECT_TRUE(context->commitEditing());
  EXPECT_EQ(editor.asked, 1);
  EXPECT_TRUE(context->hasChanges());
}

}  // namespace
}  // namespace hollin
