// SPDX-License-Identifier: MIT
// An updater that only tells what it was asked to do.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "device/ax_update.h"

namespace hollin {

using Story = std::vector<std::string>;

class FakeUpdate : public AXUpdate {
 public:
  // `name` stands before each line of the story.
  FakeUpdate(std::string name, uint32_t steps, Story& story)
      : AXUpdate("", ""), name(std::move(name)), story(story) {
    stepCount = steps;
  }

  [[nodiscard]] bool LoadFiles() override { return Tell("LoadFiles"); }
  [[nodiscard]] bool CheckConfig() override { return Tell("CheckConfig"); }
  [[nodiscard]] bool PlanSteps() override { return Tell("PlanSteps"); }
  [[nodiscard]] bool RunStep(uint32_t index) override {
    return Tell("RunStep(" + std::to_string(index) + ")");
  }
  [[nodiscard]] bool VerifyImage() override { return Tell("VerifyImage"); }
  [[nodiscard]] bool EnterUpdateMode(int32_t retries) override {
    return Tell("EnterUpdateMode(" + std::to_string(retries) + ")");
  }

  // What an operation answers, and what it may throw; given the line that it tells.
  std::function<bool(const std::string&)> answer = [](const std::string&) { return true; };

 private:
  bool Tell(const std::string& line) {
    story.push_back(name + " " + line);
    return answer(line);
  }

  std::string name;
  Story& story;
};

}  // namespace hollin
