#pragma once

// The links text's motion: forward by half a unit a tick until the visible area has moved 40
// units down the document, then back a whole unit a tick (twice as fast) to the top, and again.

// The current step direction and size: 1.0 moving forward, -2.0 moving back. One value for
// the whole program; it keeps its value when the motion stops and starts again.
extern float sign;

inline constexpr float kScrollTurnBack = 40.0f;   // turn back at y >= 40
inline constexpr float kScrollTurnForward = 0.0f; // turn forward at y <= 0
inline constexpr float kScrollUnit = 0.5f;

// One tick from the visible origin y: turns `sign` at a threshold (both are tested before the
// step) and gives the y to scroll to, which the scroll area may still clamp.
float nextScrollAmount(float y);
