#pragma once
#include <QKeyEvent>
#include <memory>
#include <xkbcommon/xkbcommon.h>

namespace orlo::wayland {

// Reads the keymap a Wayland keyboard announces (its format, and the memory file it is in);
// nullptr when it is not one XKB can read. Closes the file.
xkb_keymap* readKeymap(xkb_context* context, quint32 format, int fd, quint32 size);

// The keys of one Wayland keyboard as the Qt key events Qt itself would make of them, read
// through the keymap and modifier state the compositor sends with them.
class XkbKeyEvents {
public:
    XkbKeyEvents();
    ~XkbKeyEvents();
    XkbKeyEvents(const XkbKeyEvents&) = delete;
    XkbKeyEvents& operator=(const XkbKeyEvents&) = delete;

    xkb_context* context() const { return context_; }
    // Takes the keymap (nullptr keeps the one before); the modifiers start released.
    void setKeymap(xkb_keymap* keymap);
    void setModifiers(quint32 depressed, quint32 latched, quint32 locked, quint32 group);
    Qt::KeyboardModifiers modifiers() const;
    // The event of a key, by its evdev code, pressed (again, when repeated) or let go; nullptr
    // before any keymap.
    std::unique_ptr<QKeyEvent> keyEvent(quint32 evdevKey, bool pressed, bool repeated = false) const;
    // Whether the keymap repeats a key held down (letters, arrows and Tab do; modifiers do not).
    bool repeats(quint32 evdevKey) const;

private:
    xkb_context* context_;
    xkb_keymap* keymap_ = nullptr;
    xkb_state* state_ = nullptr;
};

}  // namespace orlo::wayland
