#include "clipboard/TextMatcher.h"
#include <bit>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

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
    const char16_t first = folded_.front().unicode(), last = folded_.back().unicode();
    for (char32_t c = 0; c <= 0xFFFF; ++c) {
        if (QChar::isSurrogate(c)) continue;
        const char16_t folded = fold(char16_t(c));
        if (folded == first) firsts_.append(char16_t(c));
        if (folded == last) lasts_.append(char16_t(c));
    }
}

bool TextMatcher::matchesAt(QStringView text, qsizetype at) const
{
    for (qsizetype j = 1; j < folded_.size(); ++j)
        if (fold(text[at + j].unicode()) != folded_[j].unicode()) return false;
    return true;
}

bool TextMatcher::foundByFirstCharacter(QStringView text, qsizetype from) const
{
    const qsizetype last = text.size() - folded_.size();
    for (const char16_t first : firsts_) {
        for (qsizetype at = text.indexOf(QChar(first), from); at >= 0 && at <= last; at = text.indexOf(QChar(first), at + 1))
            if (matchesAt(text, at)) return true;
    }
    return false;
}

bool TextMatcher::foundIn(QStringView text) const
{
    if (!plain_) return text.contains(query_, Qt::CaseInsensitive);
    if (folded_.isEmpty()) return true;
    qsizetype at = 0;
#if defined(__SSE2__)
    if (firsts_.size() <= 4 && lasts_.size() <= 4) {
        // Up to four forms of each; unused places repeat the first form.
        __m128i firsts[4], lasts[4];
        for (qsizetype i = 0; i < 4; ++i) {
            firsts[i] = _mm_set1_epi16(short(firsts_[std::min(i, firsts_.size() - 1)]));
            lasts[i] = _mm_set1_epi16(short(lasts_[std::min(i, lasts_.size() - 1)]));
        }
        auto anyOf = [](const __m128i (&forms)[4], const char16_t* p) {
            const __m128i chars = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
            return _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi16(chars, forms[0]), _mm_cmpeq_epi16(chars, forms[1])),
                                _mm_or_si128(_mm_cmpeq_epi16(chars, forms[2]), _mm_cmpeq_epi16(chars, forms[3])));
        };
        const char16_t* const chars = text.utf16();
        const qsizetype span = folded_.size() - 1;  // from the first character to the last
        if (span == 0 && firsts_.size() <= 2) {
            // One character of one or two forms, as most one-letter searches are: sixteen
            // characters a step, for a search that has to read every text to its end.
            for (; at + 16 <= text.size(); at += 16) {
                const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(chars + at));
                const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(chars + at + 8));
                const __m128i hit = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi16(low, firsts[0]), _mm_cmpeq_epi16(low, firsts[1])),
                                                 _mm_or_si128(_mm_cmpeq_epi16(high, firsts[0]), _mm_cmpeq_epi16(high, firsts[1])));
                if (_mm_movemask_epi8(hit)) return true;
            }
        }
        for (; at + span + 8 <= text.size(); at += 8) {
            const __m128i both = _mm_and_si128(anyOf(firsts, chars + at), anyOf(lasts, chars + at + span));
            // Two mask bits a character.
            for (unsigned mask = unsigned(_mm_movemask_epi8(both)); mask; mask &= ~(3u << std::countr_zero(mask)))
                if (matchesAt(text, at + std::countr_zero(mask) / 2)) return true;
        }
        // The rest is shorter than a step, as are source names: one character at a time.
        for (const qsizetype last = text.size() - folded_.size(); at <= last; ++at)
            if (firsts_.contains(chars[at]) && matchesAt(text, at)) return true;
        return false;
    }
#endif
    return foundByFirstCharacter(text, at);
}

}  // namespace orlo
