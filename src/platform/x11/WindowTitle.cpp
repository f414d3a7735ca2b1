#include "platform/x11/WindowTitle.h"
#include "platform/x11/XConnection.h"
#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace orlo::x11 {

namespace {
QString fromCompoundText(XConnection& x, const QByteArray& bytes)
{
    Display* display = x.xlib();
    if (!display) return QString::fromLatin1(bytes);
    XTextProperty property;
    property.value = reinterpret_cast<unsigned char*>(const_cast<char*>(bytes.constData()));
    property.encoding = XInternAtom(display, "COMPOUND_TEXT", False);
    property.format = 8;
    property.nitems = static_cast<unsigned long>(bytes.size());
    char** list = nullptr;
    int count = 0;
    // A positive answer counts characters that had no equivalent and were replaced.
    if (Xutf8TextPropertyToTextList(display, &property, &list, &count) < Success || !list) return QString::fromLatin1(bytes);
    QString text;
    for (int i = 0; i < count; ++i) text += QString::fromUtf8(list[i]);
    XFreeStringList(list);
    return text;
}
}  // namespace

QString decodeText(XConnection& x, xcb_atom_t type, const QByteArray& bytes)
{
    if (type == x.ewmh()->UTF8_STRING) return QString::fromUtf8(bytes);
    if (type == x.atom("COMPOUND_TEXT")) return fromCompoundText(x, bytes);
    return QString::fromLatin1(bytes);
}

QString windowTitle(XConnection& x, const std::optional<QByteArray>& netName, xcb_atom_t nameType, const QByteArray& name)
{
    if (netName) return QString::fromUtf8(*netName);
    return decodeText(x, nameType, name);
}

}  // namespace orlo::x11
