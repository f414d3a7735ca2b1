#pragma once
#include <QByteArray>
#include <QString>
#include <optional>
#include <xcb/xcb.h>

namespace orlo::x11 {

class XConnection;

// A window's title as its program set it: _NET_WM_NAME, which is UTF-8, when it has one;
// else WM_NAME, decoded by the type it was written with.
QString windowTitle(XConnection& x, const std::optional<QByteArray>& netName, xcb_atom_t nameType, const QByteArray& name);

// Text of an ICCCM text property: STRING is Latin-1, UTF8_STRING is UTF-8, and
// COMPOUND_TEXT (which xterm, Motif and Tk programs write in UTF-8 locales) is decoded by
// Xlib, which knows its character sets.
QString decodeText(XConnection& x, xcb_atom_t type, const QByteArray& bytes);

}  // namespace orlo::x11
