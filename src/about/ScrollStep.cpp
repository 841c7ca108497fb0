#include "about/ScrollStep.h"

float sign = 1.0f;

float nextScrollAmount(float y) {
    if (y >= kScrollTurnBack && sign > 0)
        sign = -2.0f;
    if (y <= kScrollTurnForward && sign < 0)
        sign = 1.0f;
    return y + sign * kScrollUnit;
}
