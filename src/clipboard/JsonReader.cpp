#include "clipboard/JsonReader.h"
#include <array>
#include <bit>
#include <charconv>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace orlo {

bool JsonReader::expect(char c) { return take(c) || fail(); }

bool JsonReader::more(char closing)
{
    if (take(',')) return true;
    if (!take(closing)) fail();
    return false;
}

static int hexValue(char c)
{
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

namespace {
// Bytes that end a run of plain string content: the quote, the backslash and control characters.
constexpr std::array<bool, 256> RunStops = [] {
    std::array<bool, 256> stops{};
    for (int c = 0; c < 0x20; ++c) stops[c] = true;
    stops['"'] = stops['\\'] = true;
    return stops;
}();
}  // namespace

const char* JsonReader::plainRun()
{
    const char* start = p_;
    bool high = false;  // a byte beyond ASCII passed
#if defined(__SSE2__)
    // Sixteen bytes at a time: the run stops at a quote, a backslash or a byte below 0x20.
    const __m128i quote = _mm_set1_epi8('"'), backslash = _mm_set1_epi8('\\'), lastControl = _mm_set1_epi8(0x1F);
    while (end_ - p_ >= 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p_));
        const __m128i control = _mm_cmpeq_epi8(_mm_min_epu8(bytes, lastControl), bytes);
        const __m128i stops = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(bytes, quote), _mm_cmpeq_epi8(bytes, backslash)), control);
        const unsigned stopMask = unsigned(_mm_movemask_epi8(stops));
        const unsigned highMask = unsigned(_mm_movemask_epi8(bytes));
        if (stopMask) {
            const int n = std::countr_zero(stopMask);
            high = high || (highMask & ((1u << n) - 1));
            p_ += n;
            break;
        }
        high = high || highMask;
        p_ += 16;
    }
#else
    // Eight bytes at a time while none of them stops the run: a byte below 0x20, or one
    // equal to the quote or the backslash, sets its top bit in `stop`.
    constexpr quint64 ones = 0x0101010101010101ull, tops = 0x8080808080808080ull;
    quint64 highBits = 0;
    while (end_ - p_ >= 8) {
        quint64 word;
        std::memcpy(&word, p_, 8);
        const quint64 quote = word ^ (ones * '"'), backslash = word ^ (ones * '\\');
        const quint64 stop = ((word - ones * 0x20) | (quote - ones) | (backslash - ones)) & ~word & tops;
        if (stop) break;
        highBits |= word;
        p_ += 8;
    }
    high = highBits & tops;
#endif
    unsigned char tail = 0;
    while (p_ < end_ && !RunStops[static_cast<unsigned char>(*p_)]) tail |= static_cast<unsigned char>(*p_++);
    if (high || (tail & 0x80)) ascii_ = false;
    return start;
}

bool JsonReader::readRawString(const char** begin, qsizetype* length)
{
    if (!expect('"')) return false;
    ascii_ = true;
    // Most strings have no escapes: hand out their bytes as they stand in the text.
    const char* start = plainRun();
    if (p_ >= end_ || static_cast<unsigned char>(*p_) < 0x20) return fail();
    if (*p_ == '"') {
        *begin = start;
        *length = p_ - start;
        ++p_;
        return true;
    }
    scratch_.clear();
    scratch_.append(start, p_ - start);
    while (true) {
        const char* run = plainRun();
        scratch_.append(run, p_ - run);
        if (p_ >= end_ || static_cast<unsigned char>(*p_) < 0x20) return fail();
        if (*p_ == '"') break;
        if (++p_ >= end_) return fail();
        switch (const char e = *p_++) {
        case '"': case '\\': case '/': scratch_.push_back(e); break;
        case 'b': scratch_.push_back('\b'); break;
        case 'f': scratch_.push_back('\f'); break;
        case 'n': scratch_.push_back('\n'); break;
        case 'r': scratch_.push_back('\r'); break;
        case 't': scratch_.push_back('\t'); break;
        case 'u': {
            auto unit = [this](char32_t* out) {
                if (end_ - p_ < 4) return false;
                char32_t v = 0;
                for (int i = 0; i < 4; ++i) {
                    const int h = hexValue(p_[i]);
                    if (h < 0) return false;
                    v = (v << 4) | char32_t(h);
                }
                p_ += 4;
                *out = v;
                return true;
            };
            char32_t code = 0;
            if (!unit(&code)) return fail();
            if (code >= 0xD800 && code < 0xDC00 && end_ - p_ >= 6 && p_[0] == '\\' && p_[1] == 'u') {
                const char* back = p_;
                p_ += 2;
                char32_t low = 0;
                if (unit(&low) && low >= 0xDC00 && low < 0xE000) code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
                else p_ = back;
            }
            if (code >= 0x80) ascii_ = false;
            scratch_.append(QString::fromUcs4(&code, 1).toStdString());
            break;
        }
        default: return fail();
        }
    }
    ++p_;
    *begin = scratch_.data();
    *length = qsizetype(scratch_.size());
    return true;
}

bool JsonReader::readString(QString* out)
{
    const char* begin = nullptr;
    qsizetype length = 0;
    if (!readRawString(&begin, &length)) return false;
    *out = ascii_ ? QString::fromLatin1(begin, length) : QString::fromUtf8(begin, length);
    return true;
}

bool JsonReader::readUtf8(QByteArrayView* out)
{
    const char* begin = nullptr;
    qsizetype length = 0;
    if (!readRawString(&begin, &length)) return false;
    *out = QByteArrayView(begin, length);
    return true;
}

bool JsonReader::readKey(QByteArrayView* out)
{
    // Keys are short and plain: look for the closing quote and the colon right away.
    skipBlanks();
    if (p_ < end_ && *p_ == '"') {
        const char* const start = p_ + 1;
        const char* q = start;
        while (q < end_ && q - start < 32 && !RunStops[static_cast<unsigned char>(*q)]) ++q;
        if (end_ - q >= 2 && q[0] == '"' && q[1] == ':') {
            *out = QByteArrayView(start, q - start);
            p_ = q + 2;
            return true;
        }
    }
    return readUtf8(out) && expect(':');
}

bool JsonReader::readNumber(double* out)
{
    skipBlanks();
    // JSON's grammar, which is stricter than from_chars: no leading '+', no bare '.'.
    const char* q = p_;
    if (q < end_ && *q == '-') ++q;
    if (q >= end_ || *q < '0' || *q > '9') return fail();
    const auto result = std::from_chars(p_, end_, *out);
    if (result.ec != std::errc()) return fail();
    p_ = result.ptr;
    return true;
}

bool JsonReader::readBool(bool* out)
{
    skipBlanks();
    if (end_ - p_ >= 4 && std::memcmp(p_, "true", 4) == 0) {
        p_ += 4;
        *out = true;
        return true;
    }
    if (end_ - p_ >= 5 && std::memcmp(p_, "false", 5) == 0) {
        p_ += 5;
        *out = false;
        return true;
    }
    return fail();
}

bool JsonReader::readNull()
{
    skipBlanks();
    if (end_ - p_ >= 4 && std::memcmp(p_, "null", 4) == 0) {
        p_ += 4;
        return true;
    }
    return fail();
}

bool JsonReader::skipValue()
{
    // Deeper than any file Orlo writes: refuse rather than run out of stack.
    if (depth_ > 256) return fail();
    struct Level {
        int& depth;
        explicit Level(int& d) : depth(d) { ++depth; }
        ~Level() { --depth; }
    } level(depth_);
    switch (peek()) {
    case '{': {
        ++p_;
        if (take('}')) return true;
        QByteArrayView key;
        do {
            if (!readKey(&key) || !skipValue()) return false;
        } while (more('}'));
        return ok_;
    }
    case '[':
        ++p_;
        if (take(']')) return true;
        do {
            if (!skipValue()) return false;
        } while (more(']'));
        return ok_;
    case '"': {
        const char* begin;
        qsizetype length;
        return readRawString(&begin, &length);
    }
    case 't':
    case 'f': {
        bool b;
        return readBool(&b);
    }
    case 'n': return readNull();
    default: {
        double d;
        return readNumber(&d);
    }
    }
}

bool JsonReader::atEnd()
{
    skipBlanks();
    return ok_ && p_ == end_;
}

}  // namespace orlo
