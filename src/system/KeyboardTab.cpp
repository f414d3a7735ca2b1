#include "system/KeyboardTab.h"
#include "kit/Symbols.h"
#include "kit/ToggleSwitch.h"
#include "system/KeyboardCleaner.h"
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace orlo {

KeyboardTab::KeyboardTab(KeyboardCleaner& cleaner, QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("keyboardTab"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(12, 12, 12, 12);
    auto* box = new QGroupBox(this);
    auto* inside = new QVBoxLayout(box);
    auto* row = new QHBoxLayout;
    auto* icon = new QLabel(box);
    icon->setPixmap(symbolPixmap(QStringLiteral("keyboard"), 24));
    auto* title = new QLabel(tr("Keyboard Cleaning"), box);
    auto* toggle = new ToggleSwitch(box);
    toggle->setObjectName(QStringLiteral("keyboardCleaning"));
    toggle->setAccessibleName(title->text());
    row->addWidget(icon);
    row->addWidget(title, 1);
    row->addWidget(toggle);
    inside->addLayout(row);
    QString text = tr("Locks every key, including the media, volume and brightness keys, so you can wipe the keyboard "
                      "without typing into anything. Every screen shows that the keyboard is locked.\n\n"
                      "To unlock, hold Esc for 3 seconds or click Done. The keyboard unlocks by itself after 2 minutes, "
                      "and whenever Orlo quits.");
#ifndef Q_OS_MACOS
    text += QStringLiteral("\n\n")
            + tr("A few keys reach the system even so, because the X server cannot hold them back: "
                 "Ctrl+Alt+F1 to F12 switch to another console, and Alt+SysRq combinations go straight to the "
                 "kernel. Where logind runs, the power and suspend keys do nothing while the keyboard is locked.");
#endif
    auto* explanation = new QLabel(text, box);
    explanation->setWordWrap(true);
    inside->addWidget(explanation);
    column->addWidget(box);
    column->addStretch(1);

    toggle->show(cleaner.isActive());
    connect(&cleaner, &KeyboardCleaner::activeChanged, toggle, &ToggleSwitch::show);
    connect(toggle, &ToggleSwitch::toggled, &cleaner, [&cleaner, toggle](bool on) {
        if (on) cleaner.beginWithPrompt();
        else cleaner.end();
        toggle->show(cleaner.isActive());
    });
}

}  // namespace orlo
