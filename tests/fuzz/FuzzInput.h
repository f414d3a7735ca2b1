#pragma once
#include "platform/SettingsStorage.h"
#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

// What the harnesses share: the input as Qt bytes, a file to hand it over in, and a way to
// stop at a broken promise that the fuzzer records like a crash.
namespace orlo::fuzz {

inline QByteArray bytes(const uint8_t* data, size_t size)
{
    return QByteArray(reinterpret_cast<const char*>(data), qsizetype(size));
}

// A file in a folder of this process's own, holding the input, for readers that take a path.
inline QString fileHolding(const QByteArray& contents, const char* name)
{
    static QTemporaryDir folder;
    const QString path = QDir(folder.path()).filePath(QString::fromLatin1(name));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) std::abort();
    file.write(contents);
    return path;
}

// Removes everything a reader left in the folder of fileHolding, such as files set aside.
inline void clearFolderOf(const QString& path)
{
    QDir folder = QFileInfo(path).dir();
    for (const QString& name : folder.entryList(QDir::Files | QDir::Hidden)) folder.remove(name);
}

// Settings that a defaults store starts from; it saves nothing.
class StoredSettings : public SettingsStorage {
public:
    explicit StoredSettings(QVariantMap values) : values_(std::move(values)) {}
    Loaded load() override { return {values_, {}}; }
    bool save(const QVariantMap&) override { return true; }

private:
    QVariantMap values_;
};

inline void require(bool promise, const char* what)
{
    if (promise) return;
    std::fprintf(stderr, "broken: %s\n", what);
    std::abort();
}

}  // namespace orlo::fuzz
