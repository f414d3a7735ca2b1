#pragma once
#include <QByteArrayView>
#include <QString>
#include <QStringView>
#include <array>

namespace orlo {

// What a copy's content is recognised by. The history writes it as text: a letter for the
// kind of content, a colon and the first 16 bytes of the content's SHA-256 in lower-case hex
// ("t:ba7816bf…"), or for a colour its hex text ("c:#FF0000"). The digest form, which nearly
// every item has, is held here in 17 bytes without an allocation; any other text is kept as
// it stands. Two signatures are equal exactly when their texts are.
class ClipSignature {
public:
    static constexpr qsizetype DigestTextLength = 34;

    ClipSignature() = default;
    static ClipSignature fromText(QStringView text);
    static ClipSignature fromUtf8(QByteArrayView text);
    // The signature of content of this kind ('t', 'i', 'f').
    static ClipSignature ofContent(char kind, QByteArrayView content);

    QString toString() const;
    // Writes the digest form's text (DigestTextLength characters) and says whether it had one.
    bool digestText(char* out) const;
    // What the history's index files it under; equal signatures have equal keys.
    quint64 key() const;

    bool operator==(const ClipSignature&) const = default;

private:
    template <typename Char>
    static bool readDigest(const Char* text, qsizetype size, ClipSignature& into);

    std::array<quint8, 16> digest_{};
    char kind_ = 0;  // 0 when the signature is other_
    QString other_;
};

}  // namespace orlo

Q_DECLARE_TYPEINFO(orlo::ClipSignature, Q_RELOCATABLE_TYPE);
