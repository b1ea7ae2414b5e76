// SPDX-License-Identifier: MIT
// The desktop that a program shows its windows on: an X server in memory without a window manager.
// Windows are named by their titles.
#pragma once

#include <string>
#include <utility>

#include "tests/support/subprocess.h"

namespace hollin {

class Desktop {
 public:
  Desktop();
  ~Desktop();
  Desktop(const Desktop&) = delete;
  Desktop& operator=(const Desktop&) = delete;

  // What a program needs in order to appear here.
  [[nodiscard]] std::pair<std::string, std::string> Environment() const {
    return {"DISPLAY", display};
  }

  [[nodiscard]] bool Shows(const std::string& title) const { return !WindowNamed(title).empty(); }
  // The colour in the window's upper left corner, as 0xRRGGBB.
  [[nodiscard]] unsigned long CornerColour(const std::string& title) const;
  // Whether the window has a property, as window managers read them, of at least that many items.
  [[nodiscard]] bool HasProperty(const std::string& title, const std::string& property,
                                 size_t items) const;
  // Presses a key, as xdotool names it, in that window.
  void Press(const std::string& title, const std::string& key) const;
  // What a window manager does when the user closes a window.
  void Close(const std::string& title) const;
  // Ends like a server that crashes, or a session that is over.
  void Vanish() const;

 private:
  [[nodiscard]] std::string WindowNamed(const std::string& title) const;
  [[nodiscard]] std::string Xdotool(const std::vector<std::string>& arguments) const;

  Subprocess server;
  std::string display;
};

}  // namespace hollin
