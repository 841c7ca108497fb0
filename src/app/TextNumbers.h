#pragma once

#include <QString>
#include <cstdint>

// Numbers read from text the way a text field's value reads: leading blanks skipped, then the
// longest leading number (an optional sign and digits; for floats a fraction and an exponent);
// text that starts with no number gives 0. Independent of the user's locale.
float leadingFloatValue(const QString& text);
int32_t leadingIntValue(const QString& text); // fraction cut off; clamped to the int32 range
