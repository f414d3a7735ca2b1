#include "clipboard/JsonReader.h"
#include <array>
#include <charconv>
#include <cstring>

namespace orlo {

void JsonReader::skipBlanks()
{
    while (p_ < end_ && (*p_ == ' ' || *p_ == '\n' || *p_ == '\r' || *p_ == '\t')) ++p_;
}

char JsonReader::peek()
{
    skipBlanks();
    return p_ < end_ ? *p_ : 0;
}

bool JsonReader::take(char c)
{
    if (peek() != c || !ok_) return false;
    ++p_;
    return true;
}

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
    // Eight bytes at a time while none of them stops the run: a byte below 0x20, or one
    // equal to the quote or the backslash, sets its top bit in `stop`.
    constexpr quint64 ones = 0x0101010101010101ull, tops = 0x8080808080808080ull;
    quint64 high = 0;
    while (end_ - p_ >= 8) {
        quint64 word;
        std::memcpy(&word, p_, 8);
        const quint64 quote = word ^ (ones * '"'), backslash = word ^ (ones * '\\');
        const quint64 stop = ((word - ones * 0x20) | (quote - ones) | (backslash - ones)) & ~word & tops;
        if (stop) break;
        high |= word;
        p_ += 8;
    }
    unsigned char tail = 0;
    while (p_ < end_ && !RunStops[static_cast<unsigned char>(*p_)]) tail |= static_cast<unsigned char>(*p_++);
    if ((high & tops) || (tail & 0x80)) ascii_ = false;
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
        case '"': case '\\': case '/': scratch_.append(e); break;
        case 'b': scratch_.append('\b'); break;
        case 'f': scratch_.append('\f'); break;
        case 'n': scratch_.append('\n'); break;
        case 'r': scratch_.append('\r'); break;
        case 't': scratch_.append('\t'); break;
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
            scratch_.append(QString::fromUcs4(&code, 1).toUtf8());
            break;
        }
        default: return fail();
        }
    }
    ++p_;
    *begin = scratch_.constData();
    *length = scratch_.size();
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

bool JsonReader::readKey(QByteArray* out)
{
    const char* begin = nullptr;
    qsizetype length = 0;
    if (!readRawString(&begin, &length) || !expect(':')) return false;
    out->setRawData(begin, length);
    // Escaped keys live in the scratch buffer, which the next string overwrites: copy them.
    if (begin == scratch_.constData()) *out = QByteArray(begin, length);
    return true;
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
        QByteArray key;
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
