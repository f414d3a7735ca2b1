#pragma once
#include "clipboard/ClipSignature.h"
#include <QByteArray>
#include <QColor>
#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QUuid>
#include <optional>

namespace orlo {

// One entry of the clipboard history: what was copied, where from, when, and the content
// signature by which repeated copies of the same content are recognised.
struct ClipItem {
    enum class Kind { Text, Image, Files, Color };

    QUuid id;
    Kind kind = Kind::Text;
    std::optional<QString> text;      // text; files: the paths, one a line; colour: the hex text
    std::optional<QByteArray> rtf;    // text only
    std::optional<QByteArray> html;   // text only
    std::optional<QString> image;     // the PNG's file name in the store's "images" folder
    std::optional<int> imageWidth;
    std::optional<int> imageHeight;
    std::optional<QStringList> files;
    std::optional<QString> color;
    std::optional<QString> appBundleID;
    std::optional<QString> appName;
    QDateTime date;
    bool pinned = false;
    ClipSignature signature;

    bool operator==(const ClipItem&) const = default;

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
};

}  // namespace orlo

// Its members are all relocatable: lists of items may move them with memmove.
Q_DECLARE_TYPEINFO(orlo::ClipItem, Q_RELOCATABLE_TYPE);
