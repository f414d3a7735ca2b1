#pragma once
#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <string>

namespace orlo {

// A pull reader of JSON text, for files too large to build a document of first: the caller
// walks the structure it expects, reads values as it meets them and skips the rest. Any
// malformed input makes every later call fail.
class JsonReader {
public:
    explicit JsonReader(QByteArrayView json) : p_(json.data()), end_(json.data() + json.size()) {}

    bool ok() const { return ok_; }
    // The next value's first character (after blanks): '{', '[', '"', 't', 'f', 'n', a digit or '-'; 0 at the end.
    char peek()
    {
        skipBlanks();
        return p_ < end_ ? *p_ : 0;
    }
    // Consumes the character if it comes next.
    bool take(char c)
    {
        if (peek() != c || !ok_) return false;
        ++p_;
        return true;
    }
    bool expect(char c);
    // Inside an array or object after its first element: true when a ',' follows, false at
    // the closing bracket (which is consumed).
    bool more(char closing);
    bool readString(QString* out);
    // A string's UTF-8 bytes, valid until the next read.
    bool readUtf8(QByteArrayView* out);
    // An object key and its colon; the key's bytes are valid until the next read.
    bool readKey(QByteArrayView* out);
    bool readNumber(double* out);
    bool readBool(bool* out);
    bool readNull();
    bool skipValue();
    // Only blanks are left.
    bool atEnd();

private:
    void skipBlanks()
    {
        while (p_ < end_ && (*p_ == ' ' || *p_ == '\n' || *p_ == '\r' || *p_ == '\t')) ++p_;
    }
    bool fail()
    {
        ok_ = false;
        p_ = end_;
        return false;
    }
    // Skips plain string content up to the next quote, backslash or control character.
    const char* plainRun();
    // The raw bytes of a string (after its opening quote), unescaped into scratch when needed.
    bool readRawString(const char** begin, qsizetype* length);

    const char* p_;
    const char* end_;
    bool ok_ = true;
    bool ascii_ = true;  // the last string read had no byte beyond ASCII
    int depth_ = 0;
    std::string scratch_;  // appends of a few bytes are cheaper here than in a QByteArray
};

}  // namespace orlo
