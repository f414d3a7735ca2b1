#include "input/ShortcutRecorder.h"
#include "platform/KeyboardLayout.h"
#include <QApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPushButton>

namespace orlo {

ShortcutRecorder::Outcome ShortcutRecorder::decide(quint32 keyCode, quint64 flags)
{
    using namespace ModifierFlag;
    if (keyCode == KeyCode::Escape) return Cancel{};
    if (!(flags & (Control | Option | Command))) return Beep{};
    return Shortcut{keyCode, flags & ShortcutMask};
}

ShortcutRecorder::ShortcutRecorder(KeyboardLayout& layout, Shortcut current, Shortcut defaultShortcut,
                                   QWidget* parent)
    : QWidget(parent), layout_(layout), shortcut_(current), default_(defaultShortcut)
{
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    button_ = new QPushButton(this);
    button_->setMinimumWidth(110);
    auto* reset = new QPushButton(tr("Reset"), this);
    reset->setFlat(true);
    reset->setCursor(Qt::PointingHandCursor);
    reset->setStyleSheet(QStringLiteral("QPushButton { color: palette(link); border: none; }"));
    row->addWidget(button_);
    row->addWidget(reset);
    connect(button_, &QPushButton::clicked, this, [this] { recording_ ? stopRecording() : startRecording(); });
    connect(reset, &QPushButton::clicked, this, [this] { setShortcut(default_); });
    refresh();
}

void ShortcutRecorder::setShortcut(const Shortcut& shortcut)
{
    const bool changed = !(shortcut == shortcut_);
    shortcut_ = shortcut;
    refresh();
    if (changed) emit shortcutChanged(shortcut_);
}

void ShortcutRecorder::startRecording()
{
    if (recording_) return;
    recording_ = true;
    qApp->installEventFilter(this);
    refresh();
}

void ShortcutRecorder::stopRecording()
{
    if (!recording_) return;
    qApp->removeEventFilter(this);
    recording_ = false;
    refresh();
}

bool ShortcutRecorder::eventFilter(QObject*, QEvent* event)
{
    // Keep the window's own shortcuts from taking the key first.
    if (event->type() == QEvent::ShortcutOverride) {
        event->accept();
        return true;
    }
    if (event->type() != QEvent::KeyPress) return false;
    const auto key = layout_.keyEvent(*static_cast<QKeyEvent*>(event));
    if (!key || KeyCode::isModifier(key->keyCode)) return true;
    const Outcome outcome = decide(key->keyCode, key->flags);
    if (std::holds_alternative<Cancel>(outcome)) {
        stopRecording();
    } else if (auto* recorded = std::get_if<Shortcut>(&outcome)) {
        stopRecording();
        setShortcut(*recorded);
    } else {
        QApplication::beep();
    }
    return true;
}

void ShortcutRecorder::hideEvent(QHideEvent* event)
{
    stopRecording();
    QWidget::hideEvent(event);
}

void ShortcutRecorder::refresh()
{
    button_->setText(recording_ ? tr("Type shortcut…") : shortcut_.label(layout_));
    button_->setStyleSheet(recording_ ? QStringLiteral("QPushButton { color: palette(highlighted-text); background: palette(highlight); }")
                                      : QString());
}

}  // namespace orlo
