#include "switcher/SwitcherSession.h"
#include <QTextBoundaryFinder>
#include <algorithm>

namespace orlo {

namespace {
// The text cut into user-perceived characters (a letter with its combining marks is one).
QStringList graphemes(const QString& text)
{
    QStringList parts;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype start = 0;
    while (finder.toNextBoundary() != -1) {
        const qsizetype end = finder.position();
        parts << text.mid(start, end - start);
        start = end;
    }
    return parts;
}

// Whether the needle occurs in the haystack starting and ending between whole characters.
bool containsWhole(const QString& haystack, const QString& needle)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, haystack);
    for (qsizetype at = haystack.indexOf(needle); at != -1; at = haystack.indexOf(needle, at + 1)) {
        finder.setPosition(at);
        if (!finder.isAtBoundary()) continue;
        finder.setPosition(at + needle.size());
        if (finder.isAtBoundary()) return true;
    }
    return false;
}

QString withoutWhitespace(const QString& text)
{
    QString out;
    out.reserve(text.size());
    for (QChar c : text)
        if (!c.isSpace()) out += c;
    return out;
}
}  // namespace

SwitcherSession::SwitcherSession(QList<SwitchItem> items, SwitcherSettings::Layout layout, QObject* parent)
    : QObject(parent), items_(std::move(items)), layout_(layout)
{
    refilter();
}

void SwitcherSession::setItems(QList<SwitchItem> items)
{
    items_ = std::move(items);
    refilter();
    emit changed();
}

void SwitcherSession::setSelection(int selection)
{
    if (selection == selection_) return;
    selection_ = selection;
    emit changed();
}

void SwitcherSession::setSticky(bool sticky)
{
    if (sticky == sticky_) return;
    sticky_ = sticky;
    emit changed();
}

void SwitcherSession::setQuery(const QString& query)
{
    if (query == query_) return;
    query_ = query;
    refilter();
    emit changed();
}

std::optional<SwitchItem> SwitcherSession::selected() const
{
    if (selection_ < 0 || selection_ >= filtered_.size()) return std::nullopt;
    return filtered_[selection_];
}

void SwitcherSession::move(int delta)
{
    const int n = int(filtered_.size());
    if (n == 0) return;
    setSelection(((selection_ + delta) % n + n) % n);
}

int SwitcherSession::columns() const { return std::max(1, std::min(6, int(filtered_.size()))); }

void SwitcherSession::type(const QString& text)
{
    setQuery(query_ + text);
    setSelection(0);
    setSticky(true);
}

void SwitcherSession::backspace()
{
    if (query_.isEmpty()) return;
    const QStringList parts = graphemes(query_);
    setQuery(query_.left(query_.size() - parts.last().size()));
    setSelection(0);
    setSticky(true);
}

void SwitcherSession::refilter()
{
    const auto before = selected();
    filtered_ = filter(items_, query_);
    if (before) {
        const auto it = std::find_if(filtered_.cbegin(), filtered_.cend(), [&](const SwitchItem& i) { return i.id == before->id; });
        if (it != filtered_.cend()) selection_ = int(it - filtered_.cbegin());
    }
    selection_ = filtered_.isEmpty() ? 0 : std::min(selection_, int(filtered_.size()) - 1);
}

QList<SwitchItem> SwitcherSession::filter(const QList<SwitchItem>& items, const QString& query)
{
    const QString lowered = query.toLower();
    const QString needle = withoutWhitespace(lowered);
    if (needle.isEmpty()) return items;
    QList<SwitchItem> direct, loose;
    for (const SwitchItem& item : items) {
        const QString haystack = (item.title + QLatin1Char(' ') + item.appName).toLower();
        if (containsWhole(haystack, lowered))
            direct << item;
        else if (isSubsequence(needle, haystack))
            loose << item;
    }
    return direct + loose;
}

bool SwitcherSession::isSubsequence(const QString& needle, const QString& haystack)
{
    const QStringList wanted = graphemes(needle);
    if (wanted.isEmpty()) return true;
    qsizetype next = 0;
    for (const QString& c : graphemes(haystack))
        if (c == wanted[next] && ++next == wanted.size()) return true;
    return false;
}

}  // namespace orlo
