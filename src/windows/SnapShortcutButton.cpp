#include "windows/SnapShortcutButton.h"
#include "windows/SnapSettings.h"
#include "platform/KeyboardLayout.h"

namespace orlo {

SnapShortcutButton::SnapShortcutButton(SnapSettings& settings, SnapAction action, KeyboardLayout& layout, QWidget* parent)
    : QPushButton(parent), settings_(settings), action_(action), layout_(layout)
{
    setMinimumWidth(110);
    setAccessibleName(action.title());
    connect(this, &QPushButton::clicked, this, [this] {
        if (settings_.recording() == action_)
            settings_.endRecording();
        else
            settings_.startRecording(action_);
    });
    connect(&settings_, &SnapSettings::shortcutsChanged, this, &SnapShortcutButton::refresh);
    connect(&settings_, &SnapSettings::recordingChanged, this, &SnapShortcutButton::refresh);
    connect(&layout_, &KeyboardLayout::changed, this, &SnapShortcutButton::refresh);
    refresh();
}

void SnapShortcutButton::refresh()
{
    const bool recording = settings_.recording() == action_;
    const auto shortcut = settings_.shortcut(action_);
    setText(recording ? tr("Type shortcut…") : shortcut ? shortcut->label(layout_) : tr("None"));
    setStyleSheet(recording ? QStringLiteral("QPushButton { color: palette(highlighted-text); background: palette(highlight); }")
                            : QString());
}

}  // namespace orlo
