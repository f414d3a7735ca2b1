#include "clipboard/TextMatcher.h"

namespace orlo {

namespace {
char16_t fold(char16_t c)
{
    if (c < 128) return c >= 'A' && c <= 'Z' ? char16_t(c + ('a' - 'A')) : c;
    return QChar::toCaseFolded(c);
}
}  // namespace

TextMatcher::TextMatcher(const QString& query) : query_(query)
{
    folded_.resize(query.size());
    for (qsizetype i = 0; i < query.size(); ++i) {
        const char16_t c = query[i].unicode();
        plain_ = plain_ && !QChar::isSurrogate(c);
        folded_[i] = QChar(fold(c));
    }
    if (!plain_ || folded_.isEmpty()) return;
    const char16_t first = folded_[0].unicode();
    for (char32_t c = 0; c <= 0xFFFF; ++c)
        if (!QChar::isSurrogate(c) && fold(char16_t(c)) == first) firsts_.append(char16_t(c));
}

bool TextMatcher::matchesAt(QStringView text, qsizetype at) const
{
    for (qsizetype j = 1; j < folded_.size(); ++j)
        if (fold(text[at + j].unicode()) != folded_[j].unicode()) return false;
    return true;
}

bool TextMatcher::foundIn(QStringView text) const
{
    if (!plain_) return text.contains(query_, Qt::CaseInsensitive);
    if (folded_.isEmpty()) return true;
    const qsizetype last = text.size() - folded_.size();
    for (const char16_t first : firsts_) {
        for (qsizetype at = text.indexOf(QChar(first)); at >= 0 && at <= last; at = text.indexOf(QChar(first), at + 1))
            if (matchesAt(text, at)) return true;
    }
    return false;
}

}  // namespace orlo
