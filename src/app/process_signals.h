// SPDX-License-Identifier: MIT
// What the programs do about signals.
#pragma once

namespace hollin {

// A file size limit then shows as a short write, which is noticed, instead of ending the program.
// At program start.
void IgnoreFileSizeSignal();

// Output that nobody reads any more is then a failed write instead of the program's end, in the
// middle of an update as it may be. At program start.
void IgnoreBrokenPipeSignal();

// Blocks all signals in the calling thread, and so in the threads that it starts: one that
// interrupts a read would end the update. For the thread that talks to the keyboard.
void BlockSignalsInThisThread();

}  // namespace hollin
