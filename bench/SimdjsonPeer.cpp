#include "SimdjsonPeer.h"
#include "clipboard/ClipHistoryFile.h"
#include <QElapsedTimer>
#include <cmath>
#include <QString>
#include <simdjson.h>

namespace simdjsonpeer {

namespace {
double ms(const QElapsedTimer& clock) { return double(clock.nsecsElapsed()) / 1e6; }

qsizetype walk(simdjson::dom::element element)
{
    switch (element.type()) {
    case simdjson::dom::element_type::ARRAY: {
        qsizetype n = 0;
        for (simdjson::dom::element child : element.get_array()) n += walk(child);
        return n;
    }
    case simdjson::dom::element_type::OBJECT: {
        qsizetype n = 0;
        for (simdjson::dom::key_value_pair field : element.get_object()) n += walk(field.value);
        return n;
    }
    case simdjson::dom::element_type::STRING: {
        const std::string_view text = element.get_string().value_unsafe();
        return QString::fromUtf8(text.data(), qsizetype(text.size())).size();
    }
    default:
        return 1;
    }
}
}  // namespace

// Times the parse of the file and what is done with the document after it.
template <class Then>
double timedParse(const QByteArray& json, Then then)
{
    simdjson::dom::parser parser;
    const simdjson::padded_string padded(json.constData(), size_t(json.size()));
    QElapsedTimer clock;
    clock.start();
    simdjson::dom::element root;
    if (parser.parse(padded).get(root)) return -1;
    then(root);
    return ms(clock);
}

double parse(const QByteArray& json)
{
    return timedParse(json, [](simdjson::dom::element) {});
}

double parseAndWalk(const QByteArray& json)
{
    return timedParse(json, [](simdjson::dom::element root) {
        volatile qsizetype visited = walk(root);
        Q_UNUSED(visited);
    });
}

namespace {
QString text(std::string_view utf8) { return QString::fromUtf8(utf8.data(), qsizetype(utf8.size())); }

bool readItem(simdjson::ondemand::object object, orlo::ClipItem& item)
{
    using namespace orlo;
    std::optional<QByteArray> rtf, html;
    std::optional<QString> image, color;
    std::optional<int> width, height;
    std::optional<QStringList> files;
    for (auto field : object) {
        std::string_view key;
        if (field.unescaped_key().get(key)) return false;
        auto value = field.value();
        if (value.is_null()) continue;
        std::string_view string;
        if (key == "id") {
            if (value.get_string().get(string)) return false;
            item.id = QUuid::fromString(QLatin1StringView(string.data(), qsizetype(string.size())));
        } else if (key == "kind") {
            if (value.get_string().get(string)) return false;
            const auto kind = ClipItem::kindFromName(text(string));
            if (!kind) return false;
            item.kind = *kind;
        } else if (key == "date") {
            double seconds = 0;
            if (value.get_double().get(seconds)) return false;
            item.date = QDateTime::fromMSecsSinceEpoch(std::llround((seconds + double(ClipHistoryFile::ReferenceDateOffset)) * 1000.0), Qt::UTC);
        } else if (key == "pinned") {
            if (value.get_bool().get(item.pinned)) return false;
        } else if (key == "signature") {
            if (value.get_string().get(string)) return false;
            item.signature = ClipSignature::fromUtf8(QByteArrayView(string.data(), qsizetype(string.size())));
        } else if (key == "text" || key == "image" || key == "color" || key == "appBundleID" || key == "appName") {
            if (value.get_string().get(string)) return false;
            std::optional<QString>& into = key == "text" ? item.text : key == "image" ? image : key == "color" ? color
                                         : key == "appName" ? item.appName : item.appBundleID;
            into = text(string);
        } else if (key == "rtf" || key == "html") {
            if (value.get_string().get(string)) return false;
            auto decoded = QByteArray::fromBase64Encoding(QByteArray::fromRawData(string.data(), qsizetype(string.size())),
                                                          QByteArray::AbortOnBase64DecodingErrors);
            if (!decoded) return false;
            (key == "rtf" ? rtf : html) = *decoded;
        } else if (key == "imageWidth" || key == "imageHeight") {
            int64_t number = 0;
            if (value.get_int64().get(number)) return false;
            (key == "imageWidth" ? width : height) = int(number);
        } else if (key == "files") {
            files.emplace();
            for (auto path : value.get_array()) {
                if (path.get_string().get(string)) return false;
                files->append(text(string));
            }
        }
    }
    if (rtf) item.setRtf(std::move(rtf));
    if (html) item.setHtml(std::move(html));
    if (image) item.setImage(std::move(image));
    if (width || height) item.setImageSize(width, height);
    if (files) item.setFiles(std::move(files));
    if (color) item.setColor(std::move(color));
    return !item.id.isNull();
}
}  // namespace

double parseIntoItems(const QByteArray& json, QList<orlo::ClipItem>* items)
{
    simdjson::ondemand::parser parser;
    const simdjson::padded_string padded(json.constData(), size_t(json.size()));
    QElapsedTimer clock;
    clock.start();
    simdjson::ondemand::document document;
    if (parser.iterate(padded).get(document)) return -1;
    simdjson::ondemand::array array;
    if (document.get_array().get(array)) return -1;
    for (auto element : array) {
        simdjson::ondemand::object object;
        if (element.get_object().get(object) || !readItem(object, items->emplaceBack())) return -1;
    }
    return ms(clock);
}

double serialize(const QByteArray& json)
{
    simdjson::dom::parser parser;
    const simdjson::padded_string padded(json.constData(), size_t(json.size()));
    simdjson::dom::element root;
    if (parser.parse(padded).get(root)) return -1;
    QElapsedTimer clock;
    clock.start();
    const std::string text = simdjson::minify(root);
    volatile size_t size = text.size();
    Q_UNUSED(size);
    return ms(clock);
}

}  // namespace simdjsonpeer
