#pragma once
#include "clipboard/ClipSignature.h"
#include <QByteArray>
#include <QColor>
#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QUuid>
#include <memory>
#include <optional>

namespace orlo {

// One entry of the clipboard history: what was copied, where from, when, and the content
// signature by which repeated copies of the same content are recognised.
struct ClipItem {
    enum class Kind { Text, Image, Files, Color };

    QUuid id;
    Kind kind = Kind::Text;
    bool pinned = false;
    std::optional<QString> text;  // text; files: the paths, one a line; colour: the hex text
    std::optional<QString> appBundleID;
    std::optional<QString> appName;
    QDateTime date;
    ClipSignature signature;

    // The forms only some kinds have are kept apart: most items are plain text, and each is
    // smaller without room for these.
    const std::optional<QByteArray>& rtf() const { return forms().rtf; }    // text only
    const std::optional<QByteArray>& html() const { return forms().html; }  // text only
    const std::optional<QString>& image() const { return forms().image; }  // the PNG's file name in the store's "images" folder
    const std::optional<int>& imageWidth() const { return forms().imageWidth; }
    const std::optional<int>& imageHeight() const { return forms().imageHeight; }
    const std::optional<QStringList>& files() const { return forms().files; }
    const std::optional<QString>& color() const { return forms().color; }
    void setRtf(std::optional<QByteArray> rtf) { editForms().rtf = std::move(rtf); }
    void setHtml(std::optional<QByteArray> html) { editForms().html = std::move(html); }
    void setImage(std::optional<QString> image) { editForms().image = std::move(image); }
    void setImageSize(std::optional<int> width, std::optional<int> height);
    void setFiles(std::optional<QStringList> files) { editForms().files = std::move(files); }
    void setColor(std::optional<QString> color) { editForms().color = std::move(color); }

    ClipItem() = default;
    ClipItem(const ClipItem& other);
    ClipItem& operator=(const ClipItem& other);
    ClipItem(ClipItem&&) noexcept = default;
    ClipItem& operator=(ClipItem&&) noexcept = default;
    bool operator==(const ClipItem& other) const;

    // Rich forms and images larger than these are not kept.
    static constexpr qsizetype MaxRichBytes = 2'000'000;
    static constexpr qsizetype MaxPngBytes = 40'000'000;

    static QString kindName(Kind kind);
    static std::optional<Kind> kindFromName(const QString& name);

    static ClipSignature textSignature(const QString& text);
    static ClipSignature imageSignature(const QByteArray& png);
    static ClipSignature filesSignature(const QString& joinedPaths);
    static ClipSignature colorSignature(const QString& hex);

    // "#RRGGBB" for an opaque colour, "#RRGGBBAA" otherwise; nothing for an invalid colour.
    static std::optional<QString> hex(const QColor& color);
    static std::optional<QColor> colorFromHex(const QString& hex);

    // A new item of each kind, captured now, not pinned, without its source application.
    static ClipItem makeText(const QString& text, std::optional<QByteArray> rtf, std::optional<QByteArray> html);
    static ClipItem makeImage(const QByteArray& png, int width, int height);
    static ClipItem makeFiles(const QStringList& paths);
    static ClipItem makeColor(const QString& hex);

    QString title() const;
    QStringList fileNames() const;
    QString symbol() const;

private:
    struct Forms {
        std::optional<QByteArray> rtf;
        std::optional<QByteArray> html;
        std::optional<QString> image;
        std::optional<int> imageWidth;
        std::optional<int> imageHeight;
        std::optional<QStringList> files;
        std::optional<QString> color;
        bool operator==(const Forms&) const = default;
    };
    const Forms& forms() const;
    Forms& editForms();

    std::unique_ptr<Forms> forms_;  // none while the item has none of them
};

}  // namespace orlo

// Its members are all relocatable: lists of items may move them with memmove.
Q_DECLARE_TYPEINFO(orlo::ClipItem, Q_RELOCATABLE_TYPE);
