#pragma once

// Magick++ must be initialised once before any thread reads or writes through it, with its
// resource limits set from DecodeLimits.h. Every reader and writer through Magick++ calls this
// first; it is cheap after the first call and safe from any thread. It loads every coder module
// (122 of them here, some 11-14 MB and 50 ms) and then puts the program's own libtiff handlers in
// place (see useOwnTiffHandlers). Neither the window nor the command line calls it at start: a
// session that meets no file or format of Magick's never loads them.
void ensureMagickInitialised();

// Magick++ started, with its resource limits, but no coder module loaded: enough to ask whether
// one coder writes (which loads that coder's module alone). Safe from any thread.
void ensureMagickStarted();

// Installs the program's libtiff error and warning handlers, replacing whatever a library put
// there (Magick's TIFF module points them at reports it frees). Called once Magick++ has
// initialised and before every read through Qt's TIFF reader, the program's only TIFF path.
void useOwnTiffHandlers();
