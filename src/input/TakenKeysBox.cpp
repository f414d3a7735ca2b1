#include "input/TakenKeysBox.h"
#include <QClipboard>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace orlo {

TakenKeysBox::TakenKeysBox(HotKeys& hotKeys, QString page, KeyboardLayout& layout, QWidget* parent)
    : QWidget(parent), hotKeys_(hotKeys), page_(std::move(page)), layout_(layout)
{
    setObjectName(QStringLiteral("takenKeys"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    text_ = new QLabel(this);
    text_->setObjectName(QStringLiteral("takenKeysText"));
    text_->setWordWrap(true);
    column->addWidget(text_);
    lines_ = new QLabel(this);
    lines_->setObjectName(QStringLiteral("bindingLines"));
    lines_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    lines_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    column->addWidget(lines_);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    useFreeKeys_ = new QPushButton(tr("Use &Free Keys"), this);
    useFreeKeys_->setObjectName(QStringLiteral("useFreeKeys"));
    copyCommands_ = new QPushButton(tr("&Copy Commands"), this);
    copyCommands_->setObjectName(QStringLiteral("copyCommands"));
    buttons->addWidget(useFreeKeys_);
    buttons->addWidget(copyCommands_);
    column->addLayout(buttons);
    copied_ = new QLabel(tr("Copied to the clipboard."),
                         this);
    copied_->setObjectName(QStringLiteral("commandsCopied"));
    copied_->setWordWrap(true);
    copied_->hide();
    column->addWidget(copied_);
    connect(useFreeKeys_, &QPushButton::clicked, this, &TakenKeysBox::useFreeKeysClicked);
    connect(copyCommands_, &QPushButton::clicked, this, &TakenKeysBox::copyCommands);
    connect(&hotKeys_, &HotKeys::takenChanged, this, &TakenKeysBox::refresh);
    refresh();
}

void TakenKeysBox::setFreeKeys(const QString& description)
{
    freeKeys_ = description;
    refresh();
}

QList<HotKeys::Taken> TakenKeysBox::taken() const
{
    QList<HotKeys::Taken> list;
    for (const HotKeys::Taken& t : hotKeys_.taken())
        if (t.page == page_) list << t;
    return list;
}

void TakenKeysBox::refresh()
{
    const QList<HotKeys::Taken> list = taken();
    setVisible(!list.isEmpty());
    if (list.isEmpty()) {
        copied_->hide();
        return;
    }
    const QString file = hotKeys_.bindingsFile();
    lines_->setVisible(!file.isEmpty());
    if (!file.isEmpty()) {
        text_->setText(tr("This compositor lets no program take shortcuts: it binds keys in its own configuration. "
                          "Add these lines to %1, then reload it:").arg(file));
        lines_->setText(bindingLines(list, hotKeys_).join(QLatin1Char('\n')));
        useFreeKeys_->hide();
        return;
    }
    const QString held = list.size() == 1
                             ? tr("One shortcut here does nothing: another program, usually the window manager, keeps it.")
                             : tr("%1 shortcuts here do nothing: another program, usually the window manager, keeps "
                                  "them.").arg(list.size());
    const QString ways = freeKeys_.isEmpty()
                             ? tr("No other set of keys is free on this window manager either: copy the commands and "
                                  "bind them in its keyboard settings.")
                             : tr("Free on this window manager: %1. Switch to them, or copy the commands and bind them "
                                  "in its keyboard settings.").arg(freeKeys_);
    text_->setText(held + QLatin1Char(' ') + ways);
    useFreeKeys_->setVisible(!freeKeys_.isEmpty());
}

namespace {
// The taken shortcuts that a command can stand in for, each once: a shortcut shared by several
// actions is one binding, of the first action's command.
QList<HotKeys::Taken> bindable(const QList<HotKeys::Taken>& taken)
{
    QList<HotKeys::Taken> list;
    QList<Shortcut> named;
    for (const HotKeys::Taken& t : taken) {
        if (t.command.isEmpty() || named.contains(t.shortcut)) continue;
        named << t.shortcut;
        list << t;
    }
    return list;
}
}  // namespace

QStringList TakenKeysBox::bindingLines(const QList<HotKeys::Taken>& taken, const HotKeys& hotKeys)
{
    QStringList lines;
    for (const HotKeys::Taken& t : bindable(taken))
        if (QString line = hotKeys.bindingLine(t.shortcut, t.command); !line.isEmpty()) lines << line;
    return lines;
}

QString TakenKeysBox::commandsText(const QList<HotKeys::Taken>& taken, const HotKeys& hotKeys, KeyboardLayout& layout)
{
    QStringList lines;
    if (const QString file = hotKeys.bindingsFile(); !file.isEmpty()) {
        lines << tr("# Orlo's shortcuts: add these lines to %1, then reload it.").arg(file) << bindingLines(taken, hotKeys);
    } else {
        lines << tr("In your window manager's keyboard settings, give each of these keys its command "
                    "(first remove what the window manager does with the key):");
        for (const HotKeys::Taken& t : bindable(taken))
            lines << t.shortcut.label(layout, Shortcut::LabelStyle::Names) + QStringLiteral(": ") + t.command;
    }
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

void TakenKeysBox::copyCommands()
{
    QGuiApplication::clipboard()->setText(commandsText(taken(), hotKeys_, layout_));
    copied_->show();
}

}  // namespace orlo
