// SPDX-License-Identifier: MIT
#include "app/object_model.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/support/temp_folder.h"

namespace hollin {
namespace {

class ObjectModelTest : public ::testing::Test {
 protected:
  [[nodiscard]] std::unique_ptr<const ObjectModel> Load(std::string_view text) const {
    return ObjectModel::Load(folder.Write("Hollin.momd", text));
  }

  TempFolder folder;
};

TEST_F(ObjectModelTest, HoldsTheEntitiesAndAttributesOfItsFile) {
  const auto model = Load(
      "<?xml version='1.0' encoding='UTF-8'?><!-- a comment -->\n<model version='1'>\n"
      " <entity name='Note'><attribute name='text'/><attribute name='title'></attribute></entity>\n"
      " <entity name='Mark'/>\n</model>\n<!-- another -->\n");
  ASSERT_NE(model, nullptr);
  EXPECT_TRUE(model->HasEntity("Note"));
  EXPECT_TRUE(model->HasEntity("Mark"));
  EXPECT_FALSE(model->HasEntity("note"));
  EXPECT_FALSE(model->HasEntity(""));
  EXPECT_TRUE(model->HasAttribute("Note", "text"));
  EXPECT_TRUE(model->HasAttribute("Note", "title"));
  EXPECT_FALSE(model->HasAttribute("Note", "other"));
  EXPECT_FALSE(model->HasAttribute("Mark", "text"));
  EXPECT_FALSE(model->HasAttribute("Other", "text"));
}

TEST_F(ObjectModelTest, MayBeEmpty) {
  const auto model = Load("<model version='1'/>");
  ASSERT_NE(model, nullptr);
  EXPECT_FALSE(model->HasEntity("Note"));
}

TEST_F(ObjectModelTest, TheOneInTheBundleIsEmpty) {
  const auto model = ObjectModel::Load(HOLLIN_BUNDLE_DIR "/Hollin.momd");
  ASSERT_NE(model, nullptr);
  EXPECT_FALSE(model->HasEntity(""));
}

TEST_F(ObjectModelTest, WhatIsNoModelIsRefused) {
  for (
      const char* text :
      {"",
       " ",
       "text",
       "<model",
       "<model version='1'>",
       "<model/>",
       "<model version='2'/>",
       "<store version='1'/>",
       "<model version='1'/><model version='1'/>",
       "<model version='1'>text</model>",
       "<model version='1'><other/></model>",
       "<model version='1'><entity name='a'/><entity name='a'/></model>",
       "<model version='1'><entity name='a'><entity name='b'/></entity></model>",
       "<model version='1'><entity name='a'>x</entity></model>",
       R"(<model version='1'><entity name='a'><attribute name='b'/><attribute name='b'/></entity></model>)",
       "<model version='1'><entity name='a'><attribute name='b'><c/></attribute></entity></model>",
       "<model version='1'></other>",
       "<model version='1'/>text",
       "\xFF\xFE",
       "<model version='1'>\xC3(</model>"}) {
    EXPECT_EQ(Load(text), nullptr) << text;
  }
}

TEST_F(ObjectModelTest, WhatIsNoRegularFileIsRefusedAndNotWaitedFor) {
  ASSERT_EQ(mkfifo(folder.Path("fifo").c_str(), 0600), 0);
  EXPECT_EQ(ObjectModel::Load(folder.Path("fifo")), nullptr);
  EXPECT_EQ(ObjectModel::Load(folder.Path()), nullptr);
  EXPECT_EQ(ObjectModel::Load(folder.Path("missing")), nullptr);
}

}  // namespace
}  // namespace hollin
