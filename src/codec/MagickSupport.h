#pragma once

// Magick++ must be initialised once before any thread uses it, with its resource limits set
// from DecodeLimits.h. Every user of Magick++ calls this first; it is cheap after the first call
// and safe from any thread. It loads every coder module and then puts the program's own libtiff
// handlers in place (see useOwnTiffHandlers). The window calls it at start (its format list
// asks Magick); the command line leaves it to the first file or format that needs Magick.
void ensureMagickInitialised();

// Installs the program's libtiff error and warning handlers, replacing whatever a library put
// there (Magick's TIFF module points them at reports it frees). Called once Magick++ has
// initialised and before every read through Qt's TIFF reader, the program's only TIFF path.
void useOwnTiffHandlers();
