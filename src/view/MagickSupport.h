#pragma once

// Magick++ must be initialised once before any thread uses it, with its resource limits set
// from DecodeLimits.h. Every user of Magick++ calls this first; it is cheap after the first call
// and safe from any thread.
void ensureMagickInitialised();
