#include "clipboard/JsonWriter.h"
#include <cmath>
#include <QtEndian>
#include <algorithm>
#include <bit>
#include <charconv>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace orlo {

void JsonWriter::flush()
{
    if (used_ > 0) device_.write(buffer_.constData(), used_);
    used_ = 0;
}

void JsonWriter::grow(qsizetype bytes)
{
    QByteArray larger(std::max(2 * buffer_.size(), used_ + bytes), Qt::Uninitialized);
    std::memcpy(larger.data(), buffer_.constData(), size_t(used_));
    buffer_ = std::move(larger);
}

void JsonWriter::escaped(QStringView text)
{
    static const char hex[] = "0123456789abcdef";
    // Room for the worst case: every character escaped as \u00XX.
    char* d = room(text.size() * 6);
    const char16_t* s = text.utf16();
    const char16_t* const end = s + text.size();
    while (s < end) {
#if defined(__SSE2__)
        // Eight characters at a time while they are plain ASCII: below 0x80, none below 0x20,
        // none a quote or a backslash. The plain ones before the first other are written.
        bool special = false;
        while (!special && end - s >= 8) {
            const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
            const __m128i beyondAscii = _mm_xor_si128(_mm_cmpeq_epi16(_mm_and_si128(units, _mm_set1_epi16(qint16(0xFF80))), _mm_setzero_si128()),
                                                      _mm_set1_epi16(-1));
            const __m128i stops = _mm_or_si128(_mm_or_si128(beyondAscii, _mm_cmplt_epi16(units, _mm_set1_epi16(0x20))),
                                               _mm_or_si128(_mm_cmpeq_epi16(units, _mm_set1_epi16('"')),
                                                            _mm_cmpeq_epi16(units, _mm_set1_epi16('\\'))));
            const unsigned mask = unsigned(_mm_movemask_epi8(stops));
            // The room holds six bytes a character, so all eight may be stored.
            _mm_storel_epi64(reinterpret_cast<__m128i*>(d), _mm_packus_epi16(units, units));
            const int plain = mask ? std::countr_zero(mask) / 2 : 8;
            d += plain;
            s += plain;
            special = plain < 8;
        }
#else
        // Four characters at a time while they are plain ASCII: each below 0x80, none below
        // 0x20, none a quote or a backslash (a zero unit after subtracting one sets its top bit).
        constexpr quint64 ones = 0x0001000100010001ull, tops = 0x8000800080008000ull;
        while (end - s >= 4) {
            quint64 units;
            std::memcpy(&units, s, 8);
            const quint64 quote = units ^ (ones * '"'), backslash = units ^ (ones * '\\');
            if ((units & (ones * 0xFF80)) || ((units - ones * 0x20) | (quote - ones) | (backslash - ones)) & tops) break;
            for (int i = 0; i < 4; ++i) *d++ = char(s[i]);
            s += 4;
        }
#endif
        if (s == end) break;
        const char16_t c = *s++;
        if (c < 0x80) {
            if (c >= 0x20 && c != '"' && c != '\\') {
                *d++ = char(c);
                continue;
            }
            *d++ = '\\';
            switch (c) {
            case '"': *d++ = '"'; break;
            case '\\': *d++ = '\\'; break;
            case '\n': *d++ = 'n'; break;
            case '\r': *d++ = 'r'; break;
            case '\t': *d++ = 't'; break;
            case '\b': *d++ = 'b'; break;
            case '\f': *d++ = 'f'; break;
            default:
                *d++ = 'u';
                *d++ = '0';
                *d++ = '0';
                *d++ = hex[c >> 4];
                *d++ = hex[c & 0xF];
            }
            continue;
        }
        char32_t u = c;
        if (QChar::isHighSurrogate(c) && s < end && QChar::isLowSurrogate(*s)) u = QChar::surrogateToUcs4(c, *s++);
        else if (QChar::isSurrogate(c)) u = 0xFFFD;  // a lone half of a pair is no character
        if (u < 0x800) {
            *d++ = char(0xC0 | (u >> 6));
        } else if (u < 0x10000) {
            *d++ = char(0xE0 | (u >> 12));
            *d++ = char(0x80 | ((u >> 6) & 0x3F));
        } else {
            *d++ = char(0xF0 | (u >> 18));
            *d++ = char(0x80 | ((u >> 12) & 0x3F));
            *d++ = char(0x80 | ((u >> 6) & 0x3F));
        }
        *d++ = char(0x80 | (u & 0x3F));
    }
    commit(d);
}

void JsonWriter::string(QStringView text)
{
    constexpr qsizetype Piece = 1 << 16;
    put('"');
    while (!text.isEmpty()) {
        qsizetype n = std::min(Piece, text.size());
        if (n < text.size() && text[n - 1].isHighSurrogate()) ++n;  // keep a surrogate pair together
        escaped(text.first(n));
        text = text.sliced(n);
        spillIfFull();
    }
    put('"');
}

void JsonWriter::base64(const QByteArray& data)
{
    put('"');
    put(data.toBase64());
    put('"');
}

void JsonWriter::uuid(const QUuid& id)
{
    static const char hex[] = "0123456789ABCDEF";
    uchar bytes[16];
    qToBigEndian(id.data1, bytes);
    qToBigEndian(id.data2, bytes + 4);
    qToBigEndian(id.data3, bytes + 6);
    std::memcpy(bytes + 8, id.data4, 8);
    char* d = room(36);
    for (int i = 0; i < 16; ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) *d++ = '-';
        *d++ = hex[bytes[i] >> 4];
        *d++ = hex[bytes[i] & 0xF];
    }
    commit(d);
}

void JsonWriter::number(double value)
{
    // JSON has no NaN nor infinity: written as they are, the whole file would not read back.
    if (!std::isfinite(value)) value = 0;
    // The longest fixed notation, of the smallest doubles, takes about 330 characters.
    constexpr qsizetype Longest = 400;
    char* d = room(Longest);
    const auto written = std::to_chars(d, d + Longest, value, std::chars_format::fixed);
    commit(written.ec == std::errc() ? written.ptr : d);
    if (written.ec != std::errc()) put('0');
}

void JsonWriter::number(int value)
{
    char* d = room(16);
    commit(std::to_chars(d, d + 16, value).ptr);
}

}  // namespace orlo
