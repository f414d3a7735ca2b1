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
