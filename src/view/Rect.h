#pragma once

#include <cstdint>

// Integer picture rectangle in the order top, left, bottom, right. A dimension above 32767
// wraps when it is stored here; callers that need the true size ask the picture itself.
struct Rect {
    int16_t top = 0;
    int16_t left = 0;
    int16_t bottom = 0;
    int16_t right = 0;
};
