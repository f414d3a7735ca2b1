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
    : QWidget(parent), layout_(layout), shortcut_(current), default_(defaultShortcut),
      capture_(layout, [this](const KeyEvent& key) { takeKey(key); })
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
    connect(button_, &QPushButton::clicked, this, [this] { isRecording() ? stopRecording() : startRecording(); });
    connect(reset, &QPushButton::clicked, this, [this] { setShortcut(default_); });
    connect(&layout_, &KeyboardLayout::changed, this, &ShortcutRecorder::refresh);
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
    capture_.setActive(true);
    refresh();
}

void ShortcutRecorder::stopRecording()
{
    capture_.setActive(false);
    refresh();
}

void ShortcutRecorder::takeKey(const KeyEvent& key)
{
    const Outcome outcome = decide(key.keyCode, key.flags);
    if (std::holds_alternative<Cancel>(outcome)) {
        stopRecording();
    } else if (auto* recorded = std::get_if<Shortcut>(&outcome)) {
        stopRecording();
        setShortcut(*recorded);
    } else {
        QApplication::beep();
    }
}

void ShortcutRecorder::hideEvent(QHideEvent* event)
{
    stopRecording();
    QWidget::hideEvent(event);
}

void ShortcutRecorder::refresh()
{
    button_->setText(isRecording() ? tr("Type shortcut…") : shortcut_.label(layout_));
    button_->setStyleSheet(isRecording() ? QStringLiteral("QPushButton { color: palette(highlighted-text); background: palette(highlight); }")
                                      : QString());
}

}  // namespace orlo
