#pragma once

#include <QPainterPath>

// Path operations that go with the selection.
//
// A QPainterPath has no element of its own for "close": closing a subpath draws a line back to
// the point where the subpath began. So a path counts as closed when its last element ends
// exactly where its last subpath began (a lone move counts: it ends where it begins).

// False for a path with no elements; else whether the last subpath ends at its start.
bool isClosed(const QPainterPath& path);

// The path itself when it is closed; otherwise a copy with its last subpath closed. An empty
// path is closed at the origin, where its current point is, by a lone move there.
QPainterPath closedPath(const QPainterPath& path);
