#include "app/TakenShortcutsNotice.h"
#include "platform/Notifications.h"
#include <QLoggingCategory>
#include <algorithm>

namespace orlo {

Q_LOGGING_CATEGORY(lcShortcuts, "orlo.shortcuts", QtWarningMsg)

TakenShortcutsNotice::TakenShortcutsNotice(HotKeys& hotKeys, Notifications& notifications, KeyboardLayout& layout,
                                           QObject* parent)
    : QObject(parent), hotKeys_(hotKeys), notifications_(notifications), layout_(layout)
{
    // Modules take their keys one after the other: wait until they are done.
    settle_.setSingleShot(true);
    settle_.setInterval(SettleMs);
    connect(&settle_, &QTimer::timeout, this, &TakenShortcutsNotice::tell);
    // Whether a key was refused or not, the decision is taken once the start has settled.
    settle_.start();
    connect(&hotKeys_, &HotKeys::takenChanged, this, [this] {
        if (!told_)
            settle_.start();
        else
            withdrawIfDealtWith();
    });
    connect(&notifications_, &Notifications::clicked, this, [this] { emit openRequested(page_); });
    connect(&notifications_, &Notifications::unavailable, this, [this] {
        emit notShown((hotKeys_.taken().isEmpty() ? adviceTitle() : title()) + QStringLiteral(": ") + text());
    });
}

QString TakenShortcutsNotice::body(const QList<HotKeys::Taken>& taken, KeyboardLayout& layout)
{
    constexpr int named = 4;
    QStringList names;
    for (int i = 0; i < taken.size() && i < named; ++i)
        names << taken[i].shortcut.label(layout) + QStringLiteral(" ") + taken[i].action;
    QString list;
    if (taken.size() > named)
        list = names.join(QStringLiteral(", ")) + tr(" and %n more", nullptr, int(taken.size() - named));
    else if (names.size() > 1)
        list = QStringList(names.mid(0, names.size() - 1)).join(QStringLiteral(", ")) + tr(" and ") + names.last();
    else
        list = names.value(0);
    if (taken.size() == 1)
        return tr("%1 does nothing: another app already uses it. Click to switch to a free key, or to copy its "
                  "command for your desktop's keyboard settings.").arg(list);
    return tr("%1 do nothing: another app already uses them. Click to switch to free keys, or to copy their "
              "commands for your desktop's keyboard settings.").arg(list);
}

QString TakenShortcutsNotice::text() const
{
    QStringList paragraphs;
    if (!hotKeys_.taken().isEmpty()) paragraphs << body(hotKeys_.taken(), layout_);
    for (const HotKeys::Advice& advice : hotKeys_.advice()) paragraphs << advice.text;
    return paragraphs.join(QLatin1Char('\n'));
}

void TakenShortcutsNotice::tell()
{
    const QList<HotKeys::Taken> taken = hotKeys_.taken();
    const QList<HotKeys::Advice> advice = hotKeys_.advice();
    if (taken.isEmpty() && advice.isEmpty()) {
        qCDebug(lcShortcuts, "every shortcut works: nothing to tell");
        return;
    }
    qCDebug(lcShortcuts, "telling of %d taken shortcuts", int(taken.size()));
    told_ = true;
    named_ = taken;
    page_ = taken.isEmpty() ? advice.first().page : taken.first().page;
    notifications_.show(taken.isEmpty() ? adviceTitle() : title(), text());
}

void TakenShortcutsNotice::withdrawIfDealtWith()
{
    // The user has acted on the notice once one of the shortcuts it named works, or is
    // gone: what is left stays on the settings pages, and the notice is not told again.
    if (withdrawn_ || named_.isEmpty()) return;
    const QList<HotKeys::Taken> now = hotKeys_.taken();
    const bool dealtWith = std::any_of(named_.begin(), named_.end(), [&](const HotKeys::Taken& t) { return !now.contains(t); });
    if (!dealtWith) return;
    withdrawn_ = true;
    notifications_.withdraw();
    emit notShown(QString());
}

}  // namespace orlo
