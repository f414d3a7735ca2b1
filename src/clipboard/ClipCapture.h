#pragma once
#include "clipboard/ClipItem.h"
#include <functional>
#include <optional>

namespace orlo {

class Pasteboard;

// Turns the pasteboard's contents into a new history item: files, then text, then an image,
// then a colour. The pasteboard is read at once, on the thread it lives on; what may take
// long (the digest of a long text, converting and measuring an image) is left to a job that
// may run on any thread.
class ClipCapture {
public:
    struct Result {
        ClipItem item;
        QByteArray png;  // image items: the bytes to write to "images"
    };
    using Job = std::function<std::optional<Result>()>;
    struct Pending {
        Job finish;          // empty when there is nothing to record
        bool heavy = false;  // better done off the GUI thread
    };

    // A bitmap that is not PNG is converted only when its pixels take no more memory than this.
    static constexpr qint64 MaxDecodedMegabytes = 4096;
    // Texts longer than this are digested off the GUI thread.
    static constexpr qsizetype HeavyTextChars = 4'000'000;

    static Pending read(Pasteboard& pasteboard);
    // read() and its job in one go.
    static std::optional<Result> capture(Pasteboard& pasteboard);
    // An image from PNG bytes, or from another bitmap format that is converted to PNG. Its size
    // comes from the PNG's header: an image of any pixel count is recorded without decoding it.
    static std::optional<Result> image(const QByteArray& bytes, bool isPng);
};

}  // namespace orlo
