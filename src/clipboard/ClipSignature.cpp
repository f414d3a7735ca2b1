#include "clipboard/ClipSignature.h"
#include <QCryptographicHash>
#include <QHashFunctions>
#include <openssl/evp.h>
#include <cstring>
#include <type_traits>
#include <new>

namespace orlo {

namespace {
constexpr char HexDigits[] = "0123456789abcdef";

// Lower-case hex digits' values; -1 elsewhere, upper case included: a text in upper case is
// not Orlo's form and is kept as it stands.
constexpr std::array<qint8, 256> HexValues = [] {
    std::array<qint8, 256> values{};
    values.fill(-1);
    for (int i = 0; i < 16; ++i) values[uchar(HexDigits[i])] = qint8(i);
    return values;
}();

template <typename Char>
int hexValue(Char c)
{
    const auto code = std::make_unsigned_t<Char>(c);
    return code < 256 ? HexValues[code] : -1;
}
}  // namespace

template <typename Char>
bool ClipSignature::readDigest(const Char* text, qsizetype size, ClipSignature& into)
{
    if (size != DigestTextLength || text[1] != ':' || text[0] < 'a' || text[0] > 'z') return false;
    // Read aside: a text that turns out not to be a digest leaves none of it behind, which
    // equality would then see.
    decltype(into.digest_) digest;
    for (size_t i = 0; i < digest.size(); ++i) {
        const int high = hexValue(text[2 + 2 * i]), low = hexValue(text[3 + 2 * i]);
        if ((high | low) < 0) return false;
        digest[i] = quint8(high << 4 | low);
    }
    into.digest_ = digest;
    into.kind_ = char(text[0]);
    return true;
}

ClipSignature ClipSignature::fromText(QStringView text)
{
    ClipSignature signature;
    if (!readDigest(text.utf16(), text.size(), signature)) signature.other_ = text.toString();
    return signature;
}

ClipSignature ClipSignature::fromUtf8(QByteArrayView text)
{
    ClipSignature signature;
    if (!readDigest(text.data(), text.size(), signature)) signature.other_ = QString::fromUtf8(text);
    return signature;
}

ClipSignature ClipSignature::ofContent(char kind, QByteArrayView content)
{
    ClipSignature signature;
    signature.kind_ = kind;
    unsigned char hash[EVP_MAX_MD_SIZE];
    if (EVP_Digest(content.data(), size_t(content.size()), hash, nullptr, EVP_sha256(), nullptr)) {
        std::memcpy(signature.digest_.data(), hash, signature.digest_.size());
    } else {
        // OpenSSL refused (a provider without SHA-256, a context it could not make): Qt's
        // slower digest gives the same bytes.
        const QByteArray digest = QCryptographicHash::hash(content, QCryptographicHash::Sha256);
        std::memcpy(signature.digest_.data(), digest.constData(), signature.digest_.size());
    }
    return signature;
}

bool ClipSignature::digestText(char* out) const
{
    if (!kind_) return false;
    out[0] = kind_;
    out[1] = ':';
    for (size_t i = 0; i < digest_.size(); ++i) {
        out[2 + 2 * i] = HexDigits[digest_[i] >> 4];
        out[3 + 2 * i] = HexDigits[digest_[i] & 0xF];
    }
    return true;
}

QString ClipSignature::toString() const
{
    char text[DigestTextLength];
    return digestText(text) ? QString::fromLatin1(text, DigestTextLength) : other_;
}

quint64 ClipSignature::key() const
{
    if (!kind_) return qHash(other_, 0);
    // A digest is already evenly spread.
    quint64 key;
    std::memcpy(&key, digest_.data(), sizeof key);
    return key ^ quint64(quint8(kind_));
}

}  // namespace orlo
