// The clipboard history file as Orlo reads it at start. Any bytes read the same whole and
// cut into parts that threads share; and the items that read write out as a file that reads
// back as the same items.
#include "FuzzInput.h"
#include "clipboard/ClipHistoryFile.h"
#include <QThreadPool>

using orlo::ClipHistoryFile;
using orlo::fuzz::require;

static bool same(const ClipHistoryFile::Decoded& a, const ClipHistoryFile::Decoded& b)
{
    return a.items == b.items && a.newestBySignature == b.newestBySignature && a.pinned == b.pinned
        && a.imageNames == b.imageNames;
}

// Parts of a few items each, their count varying with the length, so that even small
// inputs are read by several threads.
static qsizetype smallParts(const QByteArray& json) { return std::max<qsizetype>(1, json.size() / (2 + json.size() % 7)); }

// Helpers join from the start, never (someone may wait, but does not), or once someone waits.
static ClipHistoryFile::Waiting waiting(const QByteArray& json)
{
    switch (json.size() % 3) {
    case 0: return {};
    case 1: return std::make_shared<const std::atomic<bool>>(false);
    default: return std::make_shared<const std::atomic<bool>>(true);
    }
}

// Now and then the input also goes through a file, as at start: mapped where it lies.
static std::optional<ClipHistoryFile::Decoded> readAsFile(const QByteArray& json)
{
    const ClipHistoryFile file(orlo::fuzz::fileHolding(json, "history.json"));
    auto contents = file.read(waiting(json));
    if (contents.status != ClipHistoryFile::Status::Loaded) return std::nullopt;
    return std::move(contents.history);
}

static void checkOne(const QByteArray& json);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    checkOne(orlo::fuzz::bytes(data, size));
    // The reader lets other threads free what it is done with. Freed before the next input,
    // it does not look like a leak, which would cost a search of the whole heap every time.
    QThreadPool::globalInstance()->waitForDone();
    return 0;
}

static void checkOne(const QByteArray& json)
{
    const auto whole = ClipHistoryFile::decode(json, json.size() + 1);
    const auto inParts = ClipHistoryFile::decode(json, smallParts(json), waiting(json));
    require(whole.has_value() == inParts.has_value(), "read whole and in parts, the file reads both times or neither");
    if (whole) require(same(*whole, *inParts), "read whole and in parts, the file gives the same history");
    if (json.size() % 8 == 0) {
        const auto fromFile = readAsFile(json);
        require(whole.has_value() == fromFile.has_value() && (!whole || same(*whole, *fromFile)), "a file reads as its bytes do");
    }
    if (!whole) return;

    const QByteArray written = ClipHistoryFile::encode(whole->items);
    const auto reread = ClipHistoryFile::decode(written, smallParts(written));
    require(reread.has_value(), "what Orlo writes reads back");
    require(same(*reread, *whole), "what Orlo writes reads back as the same history");
}
