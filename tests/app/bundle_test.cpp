// SPDX-License-Identifier: MIT
#include "app/bundle.h"

#include <gtest/gtest.h>

namespace hollin {
namespace {

struct PathCase {
  const char* path;
  const char* expected;
};

TEST(BundleTest, TheBundleIsTheNearestFolderThatEndsInApp) {
  const PathCase cases[] = {
      {"/opt/Hollin.app/hollin", "/opt/Hollin.app"},
      {"/opt/Hollin.app/bin/linux/hollin", "/opt/Hollin.app"},
      {"/opt/Outer.app/Inner.app/hollin", "/opt/Outer.app/Inner.app"},
      {"/opt/Outer.app/lib/hollin", "/opt/Outer.app"},
      {"/Hollin.app/hollin", "/Hollin.app"},
      {"/opt/Hollin.app.old/hollin", "/opt/Hollin.app.old/hollin"},
      {"/opt/My Hollin.app/hollin (deleted)", "/opt/My Hollin.app"},
  };
  for (const auto& [path, expected] : cases) EXPECT_EQ(BundlePathOf(path), expected);
}

TEST(BundleTest, WithoutSuchAFolderTheExecutableIsTheBundle) {
  for (const char* path : {"/usr/bin/hollin", "/hollin", "/usr/bin/hollin.app", "/opt/Hollin.App/h",
                           "/usr/bin/hollin (deleted)", "hollin", "/", ""}) {
    EXPECT_EQ(BundlePathOf(path), path);
  }
}

TEST(BundleTest, TheConfigurationLiesBesideTheBundle) {
  const PathCase cases[] = {
      {"/opt/Hollin.app", "/opt/Config.ini"},
      {"/home/me/apps/Hollin.app", "/home/me/apps/Config.ini"},
      {"/Hollin.app", "/Config.ini"},
      {"/usr/bin/hollin", "/usr/bin/Config.ini"},
      {"/hollin", "/Config.ini"},
      {"/usr/bin/hollin (deleted)", "/usr/bin/Config.ini"},
  };
  for (const auto& [path, expected] : cases) EXPECT_EQ(ConfigPathOf(path), expected);
}

TEST(BundleTest, TheFirstOccurrenceOfTheBundlesNameIsTheOneThatIsRemoved) {
  const PathCase cases[] = {
      {"/opt/Hollin.app.old/Hollin.app", "/opt/.old/Hollin.appConfig.ini"},
      {"/home/hollin/bin/hollin", "/home//bin/hollinConfig.ini"},
      {"/opt/MyHollin.app/Hollin.app", "/opt/My/Hollin.appConfig.ini"},
      {"/a/a", "//aConfig.ini"},
  };
  for (const auto& [path, expected] : cases) EXPECT_EQ(ConfigPathOf(path), expected);
}

TEST(BundleTest, OnlyAnAbsolutePathHasAConfiguration) {
  for (const char* path : {"", "hollin", "Hollin.app", "./Hollin.app", "bin/hollin"}) {
    EXPECT_EQ(ConfigPathOf(path), "") << path;
  }
  EXPECT_EQ(ConfigPathOf("/"), "/Config.ini");
}

}  // namespace
}  // namespace hollin
