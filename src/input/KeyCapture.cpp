#include "input/KeyCapture.h"
#include "platform/KeyboardLayout.h"
#include <QCoreApplication>
#include <QKeyEvent>

namespace orlo {

KeyCapture::KeyCapture(KeyboardLayout& layout, std::function<void(const KeyEvent&)> receiver, QObject* parent)
    : QObject(parent), layout_(layout), receiver_(std::move(receiver))
{
}

KeyCapture::~KeyCapture() { setActive(false); }

void KeyCapture::setActive(bool active)
{
    if (active == active_) return;
    active_ = active;
    if (active)
        qApp->installEventFilter(this);
    else
        qApp->removeEventFilter(this);
}

bool KeyCapture::eventFilter(QObject*, QEvent* event)
{
    // Keep the window's own shortcuts from taking the key first.
    if (event->type() == QEvent::ShortcutOverride) {
        event->accept();
        return true;
    }
    if (event->type() != QEvent::KeyPress) return false;
    const auto key = layout_.keyEvent(*static_cast<QKeyEvent*>(event));
    if (key && !KeyCode::isModifier(key->keyCode)) receiver_(*key);
    return true;
}

}  // namespace orlo
