#pragma once
#include <QByteArray>
#include <QByteArrayView>
#include <QIODevice>
#include <QStringView>
#include <QUuid>
#include <cstring>

namespace orlo {

// Writes JSON text to a device through a buffer that is handed on each time it holds a
// megabyte, so that writing a long document never holds much more than a megabyte of it.
// The caller lays out the structure; values are escaped and encoded here.
class JsonWriter {
public:
    explicit JsonWriter(QIODevice& device) : device_(device), buffer_(SpillBytes + SpillBytes / 4, Qt::Uninitialized) {}
    ~JsonWriter() { flush(); }
    JsonWriter(const JsonWriter&) = delete;
    JsonWriter& operator=(const JsonWriter&) = delete;

    // Raw JSON text.
    void put(char c) { *room(1) = c, ++used_; }
    template <size_t N>
    void put(const char (&text)[N])
    {
        std::memcpy(room(N - 1), text, N - 1);
        used_ += N - 1;
    }
    void put(QByteArrayView text)
    {
        std::memcpy(room(text.size()), text.data(), size_t(text.size()));
        used_ += text.size();
    }
    // A key of an object after its first: `,"key":`.
    template <size_t N>
    void nextKey(const char (&key)[N])
    {
        put(",\"");
        put(key);
        put("\":");
    }
    void string(QStringView text);
    void base64(const QByteArray& data);
    // Upper-case and without braces.
    void uuid(const QUuid& id);
    // The shortest text that reads back as the same number, never in exponent form.
    void number(double value);
    void number(int value);

    // Hands the buffer to the device once it holds a megabyte.
    void spillIfFull()
    {
        if (used_ >= SpillBytes) flush();
    }
    void flush();

private:
    // Room for at least this many bytes at the end; commit() says where the writing ended.
    char* room(qsizetype bytes)
    {
        if (buffer_.size() - used_ < bytes) grow(bytes);
        return buffer_.data() + used_;
    }
    void commit(const char* end) { used_ = end - buffer_.constData(); }
    void grow(qsizetype bytes);
    void escaped(QStringView text);

    static constexpr qsizetype SpillBytes = 1 << 20;
    QIODevice& device_;
    QByteArray buffer_;  // its first used_ bytes are written, the rest is room
    qsizetype used_ = 0;
};

}  // namespace orlo
