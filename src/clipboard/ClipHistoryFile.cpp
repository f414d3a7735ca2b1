#include "clipboard/ClipHistoryFile.h"
#include "clipboard/ClipItemJson.h"
#include "clipboard/JsonWriter.h"
#include "clipboard/SharedPartsReading.h"
#include "kit/ThreadHandOff.h"
#include <QBuffer>
#include <QFile>
#include <QSaveFile>
#include <QThread>
#include <QThreadPool>
#include <memory>

namespace orlo {

namespace {

// The items in [from, to), each after a comma but the very first.
void appendItems(JsonWriter& out, const QList<ClipItem>& items, qsizetype from, qsizetype to)
{
    for (qsizetype i = from; i < to; ++i) {
        if (i) out.put(',');
        ClipItemJson::write(out, items[i]);
    }
}

}  // namespace

void ClipHistoryFile::encode(const QList<ClipItem>& items, QIODevice& device)
{
    // A long history is encoded in parts: the later ones by other threads into memory, while
    // this one writes the first.
    const qsizetype parts = std::clamp<qsizetype>(items.size() / ItemsPerPart, 1, std::max(2, QThread::idealThreadCount()));
    auto bounds = [&items, parts](qsizetype part) { return part * items.size() / parts; };
    QList<QFuture<std::optional<QByteArray>>> later;
    for (qsizetype part = 1; part < parts; ++part) {
        later << threads::run(*QThreadPool::globalInstance(), [items, from = bounds(part), to = bounds(part + 1)]() -> std::optional<QByteArray> {
            try {
                QByteArray bytes;
                QBuffer buffer(&bytes);
                buffer.open(QIODevice::WriteOnly);
                {
                    JsonWriter out(buffer);
                    appendItems(out, items, from, to);
                }  // written out
                return bytes;
            } catch (const std::bad_alloc&) {
                return std::nullopt;
            }
        });
    }
    JsonWriter out(device);
    out.put('[');
    appendItems(out, items, 0, bounds(1));
    out.flush();
    bool failed = false;
    for (auto& part : later) {
        threads::waitFor(part);
        const auto bytes = part.takeResult();
        failed = failed || !bytes;
        if (!failed) device.write(*bytes);
    }
    if (failed) throw std::bad_alloc();
    out.put(']');
}

QByteArray ClipHistoryFile::encode(const QList<ClipItem>& items)
{
    QByteArray json;
    QBuffer buffer(&json);
    buffer.open(QIODevice::WriteOnly);
    encode(items, buffer);
    return json;
}

QList<QByteArrayView> ClipHistoryFile::splitIntoParts(QByteArrayView json, qsizetype bytesPerPart)
{
    // Orlo writes no blanks between items and begins each with its id, so in its files this
    // seam is found only where one item ends and the next begins: inside a string every quote
    // is escaped, and a quote closing a string is never followed by a letter.
    static constexpr QByteArrayView seam = "},{\"id\":\"";
    const qsizetype wanted = std::min<qsizetype>(json.size() / std::max<qsizetype>(bytesPerPart, 1) + 1, MaxParts);
    QList<QByteArrayView> parts;
    qsizetype begin = 0;
    for (qsizetype i = 1; i < wanted; ++i) {
        const qsizetype at = json.indexOf(seam, std::max(begin, i * json.size() / wanted));
        if (at < 0) break;
        parts << json.sliced(begin, at + 1 - begin);
        begin = at + 2;
    }
    parts << json.sliced(begin);
    return parts;
}

std::optional<ClipHistoryFile::Decoded> ClipHistoryFile::decode(const QByteArray& json, qsizetype bytesPerPart, const Waiting& waiting)
{
    // Read as a stream: a document of a long history would cost several times the file's
    // size in memory and most of the time. A long file is read in parts on several threads.
    const QList<QByteArrayView> parts = splitIntoParts(json, bytesPerPart);
    // Room for the items the file likely holds, and as much again at the front, where the
    // history grows: an empty list given room at its front starts in the middle of its
    // memory. Memory never written is never touched, so the room costs no resident memory.
    Decoded decoded;
    QList<ClipItem>& items = decoded.items;
    const qsizetype expected = json.size() / 250 + 1;
    items.reserve(2 * expected);
    auto makeRoomAtFront = [&items] {
        items.prepend(ClipItem());
        items.removeFirst();
    };
    makeRoomAtFront();
    const bool good = SharedPartsReading(parts, waiting).readInto(decoded);
    // Parts that did not split where items meet are read again as one.
    if (!good && parts.size() > 1) return decode(json, json.size() + 1);
    if (!good) return std::nullopt;
    // A list that outgrew its room moved to the start of a larger one.
    if (items.size() > expected) makeRoomAtFront();
    // Not squeezed: that would copy the whole list.
    return decoded;
}

ClipHistoryFile::Contents ClipHistoryFile::read(const Waiting& waiting) const
{
    auto file = std::make_shared<QFile>(path_);
    if (!file->exists()) return {};
    if (!file->open(QIODevice::ReadOnly)) return {Status::Unreadable, {}};
    // Parsed where it lies, without a copy of a file that may be tens of megabytes.
    const qint64 size = file->size();
    const uchar* mapped = size > 0 ? file->map(0, size) : nullptr;
    auto decoded = decode(mapped ? QByteArray::fromRawData(reinterpret_cast<const char*>(mapped), size) : file->readAll(), BytesPerPart, waiting);
    // Letting go of a long file's mapping takes milliseconds: another thread does it.
    if (mapped) threads::start(*QThreadPool::globalInstance(), [file, mapped] { file->unmap(const_cast<uchar*>(mapped)); });
    if (!decoded) return {Status::Unreadable, {}};
    return {Status::Loaded, std::move(*decoded)};
}

bool ClipHistoryFile::write(const QList<ClipItem>& items, QString* error) const
{
    QSaveFile file(path_);
    if (!file.open(QIODevice::WriteOnly)) {
        if (error) *error = file.errorString();
        return false;
    }
    file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    encode(items, file);
    if (!file.commit()) {
        if (error) *error = file.errorString();
        return false;
    }
    return true;
}

QString ClipHistoryFile::setAside() const
{
    const QString aside = path_ + QStringLiteral(".unreadable-") + QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    if (!QFile::rename(path_, aside)) return {};
    QFile::setPermissions(aside, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    return aside;
}

}  // namespace orlo
