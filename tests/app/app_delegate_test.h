// SPDX-License-Identifier: MIT
// The ground of the delegate's tests: a delegate whose errors and questions a test sees and
// answers, with a data folder and a model of the test's own.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "app/app_delegate.h"
#include "app/app_error.h"
#include "app/object_context.h"
#include "app/question.h"
#include "tests/app/window_test.h"

namespace hollin {

// Keeps what is presented and asked, and answers it.
class TestDelegate : public AppDelegate {
 public:
  using AppDelegate::AppDelegate;

  std::vector<AppError> errors;
  std::vector<Question> questions;
  bool isResolved = false;
  int answer = kFirstButton;
  std::function<void()> duringAlert;

 protected:
  bool Present(const AppError& error) override {
    errors.push_back(error);
    if (duringAlert) std::exchange(duringAlert, {})();
    return isResolved;
  }
  int Ask(const Question& question) override {
    questions.push_back(question);
    if (duringAlert) std::exchange(duringAlert, {})();
    return answer;
  }
};

class RefusingEditor : public ObjectEditor {
 public:
  bool commitEditing() override { return false; }
};

class AppDelegateTest : public WindowTest {
 protected:
  AppDelegateTest() {
    setenv("XDG_DATA_HOME", folder.Path().c_str(), 1);
    folder.Write("Hollin.momd", "<model version='1'><entity name='Mark'/></model>");
    delegate.emplace(folder.Path());
    delegate->setWindow(window.get());
  }
  [[nodiscard]] std::string DataFolder() const { return folder.Path("com.tovari.Hollin"); }
  [[nodiscard]] std::string StoreFile() const { return DataFolder() + "/Hollin.storedata"; }
  [[nodiscard]] std::vector<int> ErrorCodes() const {
    std::vector<int> codes;
    for (const AppError& error : delegate->errors) codes.push_back(error.code);
    return codes;
  }
  // A context with a change that has not been saved.
  ObjectContext& MakeChange() {
    ObjectContext* const context = delegate->managedObjectContext();
    EXPECT_NE(context, nullptr);
    EXPECT_TRUE(context->Insert("Mark"));
    return *context;
  }
  // From now on nothing can be saved.
  void BreakStore() const { std::filesystem::create_directory(StoreFile()); }
  void OpenPackageAndBreakStore() {
    OpenGoodPackage(0);
    MakeChange();
    BreakStore();
  }

  std::optional<TestDelegate> delegate;
  RecordedLog log;
};

}  // namespace hollin
