// SPDX-License-Identifier: MIT
#include "app/program_name.h"

#include <QGuiApplication>

#include "app/user_folders.h"

namespace hollin {

void NameProgram() {
  QGuiApplication::setApplicationName("Hollin");
  QGuiApplication::setDesktopFileName(kApplicationId);
}

}  // namespace hollin
