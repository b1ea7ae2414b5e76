// SPDX-License-Identifier: MIT
// The system log: syslog(3) under the name "Hollin", and standard error too when that is a
// terminal.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace hollin {

using LogFunction = std::function<void(const std::string& line)>;

// Writes one line. The text may come from a package: control characters are escaped and nothing in
// it is a format. May be called from any thread.
void Log(std::string_view text);

// Replaces where lines go (they arrive escaped); an empty function brings the system log back. Not
// to be called while another thread may log.
void SetLogFunction(LogFunction function);

// Replaces only the copy that a terminal on standard error gets, for a program that draws there; an
// empty function brings the plain copy back. Not to be called while another thread may log.
void SetLogEcho(LogFunction function);

}  // namespace hollin
