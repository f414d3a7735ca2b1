#include "platform/wayland/FocusedWindowTaps.h"
#include "platform/linux/KeyCodeMap.h"
#include <QGuiApplication>
#include <QKeyEvent>

namespace orlo::wayland {

namespace {
class FocusedWindowTap : public QObject, public KeyTap {
public:
    FocusedWindowTap(quint64 mask, EventTapBackend::Callback callback, FocusedWindowTaps::OwnSurfaceModifiers ownSurfaceModifiers)
        : mask_(mask), callback_(std::move(callback)), ownSurfaceModifiers_(std::move(ownSurfaceModifiers))
    {
    }
    ~FocusedWindowTap() override { setEnabled(false); }

    bool setEnabled(bool on) override
    {
        if (on == enabled_) return true;
        enabled_ = on;
        if (on) QCoreApplication::instance()->installEventFilter(this);
        else QCoreApplication::instance()->removeEventFilter(this);
        return true;
    }
    // Keys typed into other programs never reach Orlo.
    void setWatchedKeys(const QList<KeyCombo>&) override {}
    bool setSeesAllKeys(bool on) override
    {
        seesAll_ = on;
        return true;
    }
    // The compositor tells the modifiers whenever one of Orlo's windows or surfaces gets the keyboard.
    std::optional<quint64> modifierFlags() override
    {
        if (ownSurfaceModifiers_)
            if (const auto held = ownSurfaceModifiers_()) return orlo::modifierFlags(*held);
        if (!QGuiApplication::focusWindow()) return std::nullopt;
        return orlo::modifierFlags(QGuiApplication::queryKeyboardModifiers());
    }
    std::optional<bool> isKeyDown(quint32) override { return std::nullopt; }
    // Orlo never holds the keyboard here: the focus moves on as the user clicks elsewhere.
    void releaseKeyboardNow() override {}

protected:
    bool eventFilter(QObject* target, QEvent* event) override
    {
        // Qt hands a key to the window first and then to its widgets: the window's copy is the one.
        const bool key = event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease;
        if (!seesAll_ || !key || !target->isWindowType()) return false;
        auto keyEvent = canonicalKeyEvent(*static_cast<QKeyEvent*>(event));
        if (!keyEvent) return false;
        if (const quint64 flag = KeyCode::modifierFlag(keyEvent->keyCode)) {
            // The flags after the change, whatever Qt's state said before it.
            keyEvent->flags = keyEvent->type == KeyEventType::KeyDown ? keyEvent->flags | flag : keyEvent->flags & ~flag;
            keyEvent->type = KeyEventType::FlagsChanged;
        }
        if (!(mask_ & (quint64(1) << quint32(keyEvent->type)))) return false;
        return callback_(*keyEvent);
    }

private:
    quint64 mask_;
    EventTapBackend::Callback callback_;
    FocusedWindowTaps::OwnSurfaceModifiers ownSurfaceModifiers_;
    bool enabled_ = false;
    bool seesAll_ = false;
};
}  // namespace

std::unique_ptr<KeyTap> FocusedWindowTaps::createTap(quint64 mask, Callback callback)
{
    if (!QCoreApplication::instance()) return nullptr;
    return std::make_unique<FocusedWindowTap>(mask, std::move(callback), ownSurfaceModifiers_);
}

}  // namespace orlo::wayland
