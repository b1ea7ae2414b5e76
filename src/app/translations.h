// SPDX-License-Identifier: MIT
// The language of the window's texts.
#pragma once

namespace hollin {

// Takes the locale's language where there is a translation; otherwise every text, Qt's own too, is
// the English one. Once, when there is an application and before its first text.
void UseLanguageOfLocale();

}  // namespace hollin
