#include "SimdjsonPeer.h"
#include <QElapsedTimer>
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

double parse(const QByteArray& json)
{
    simdjson::dom::parser parser;
    const simdjson::padded_string padded(json.constData(), size_t(json.size()));
    QElapsedTimer clock;
    clock.start();
    simdjson::dom::element root;
    if (parser.parse(padded).get(root)) return -1;
    return ms(clock);
}

double parseAndWalk(const QByteArray& json)
{
    simdjson::dom::parser parser;
    const simdjson::padded_string padded(json.constData(), size_t(json.size()));
    QElapsedTimer clock;
    clock.start();
    simdjson::dom::element root;
    if (parser.parse(padded).get(root)) return -1;
    volatile qsizetype visited = walk(root);
    Q_UNUSED(visited);
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
