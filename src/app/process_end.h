// SPDX-License-Identifier: MIT
// How the window's process ends. A worker may wait for a silent keyboard for ever, and what it uses
// must not be taken from under it: once there was one, the process leaves without destructors.
#pragma once

namespace hollin {

class MainWindow;

// Some libraries end the process themselves, when the display has gone for example: the temporary
// files go then too. Holds until Leave.
void PrepareForSuddenEnd(MainWindow& window);

// The last call of main(), with what it would return; may not return.
[[nodiscard]] int Leave(int code);

}  // namespace hollin
