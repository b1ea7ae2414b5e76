// SPDX-License-Identifier: MIT
#include "tests/package/scripted_a1_update.h"

#include "base/file.h"

namespace hollin {
namespace {

bool Tell(const std::string& line) {
  Scripted().story.push_back(line);
  return true;
}

}  // namespace

ScriptedA1& Scripted() {
  static ScriptedA1 scripted;
  return scripted;
}

bool LoadHonestly(A1Update& updater) {
  FileContents image;
  if (!ReadWholeFile(updater.configPath, updater.description)) return false;
  if (!ReadWholeFile(updater.imagePath, image)) return false;
  updater.image = std::move(image.bytes);
  updater.imageLength = static_cast<int64_t>(image.size);
  updater.stepCount = 3;
  return true;
}

A1Update::A1Update(std::string configPath, std::string imagePath)
    : AXUpdate(std::move(configPath), std::move(imagePath)) {
  Tell("A1Update(" + this->configPath + ", " + this->imagePath + ")");
}

bool A1Update::LoadFiles() {
  Tell("LoadFiles " + configPath);
  return Scripted().load ? Scripted().load(*this) : LoadHonestly(*this);
}

bool A1Update::CheckConfig() { return Tell("CheckConfig"); }
bool A1Update::PlanSteps() { return Tell("PlanSteps"); }
bool A1Update::RunStep(uint32_t index) { return Tell("RunStep " + std::to_string(index)); }
bool A1Update::VerifyImage() { return Tell("VerifyImage"); }

}  // namespace hollin
