#include "clipboard/ClipHistoryFile.h"
#include "clipboard/JsonWriter.h"
#include <QBuffer>
#include <cmath>
#include <limits>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <gtest/gtest.h>

using namespace orlo;

namespace {

ClipItem sample()
{
    ClipItem item = ClipItem::makeText("line \"one\"\n\ttwo \u00E9", QByteArray("{\\rtf1}"), QByteArray("<b>x</b>"));
    item.id = QUuid::fromString(QStringLiteral("6f9619ff-8b86-d011-b42d-00c04fc964ff"));
    item.appBundleID = "org.example.Editor";
    item.appName = "Editor";
    // 12.5 seconds after 1 January 2001, 00:00 UTC.
    item.date = QDateTime::fromMSecsSinceEpoch((ClipHistoryFile::ReferenceDateOffset * 1000) + 12500, Qt::UTC);
    return item;
}

}  // namespace

TEST(ClipHistoryFile, WritesKeysInFieldOrderWithoutNulls)
{
    const ClipItem item = sample();
    const QByteArray expected = "[{\"id\":\"6F9619FF-8B86-D011-B42D-00C04FC964FF\",\"kind\":\"text\","
                                "\"text\":\"line \\\"one\\\"\\n\\ttwo \xC3\xA9\",\"rtf\":\"e1xydGYxfQ==\","
                                "\"html\":\"PGI+eDwvYj4=\",\"appBundleID\":\"org.example.Editor\",\"appName\":\"Editor\","
                                "\"date\":12.5,\"pinned\":false,\"signature\":\""
                                + item.signature.toString().toLatin1() + "\"}]";
    EXPECT_EQ(ClipHistoryFile::encode({item}), expected);

    ClipItem image = ClipItem::makeImage("png", 30, 20);
    image.setImage("A.png");
    image.pinned = true;
    ClipItem files = ClipItem::makeFiles({"/a b", "/c\u0001"});
    const QByteArray json = ClipHistoryFile::encode({image, files});
    EXPECT_TRUE(json.contains("\"kind\":\"image\",\"image\":\"A.png\",\"imageWidth\":30,\"imageHeight\":20,\"date\":"));
    EXPECT_TRUE(json.contains("\"files\":[\"/a b\",\"/c\\u0001\"]"));
    EXPECT_FALSE(json.contains("null"));
}

TEST(ClipHistoryFile, ReadsBackWhatItWrites)
{
    ClipItem image = ClipItem::makeImage("png", 30, 20);
    image.setImage("0E5D1B3C-6F2A-4C8B-9D7E-1A2B3C4D5E6F.png");
    image.pinned = true;
    QList<ClipItem> items{sample(), image, ClipItem::makeFiles({"/x", "/y"}), ClipItem::makeColor("#FF000080")};
    // Rich data of every length modulo three, so that each kind of Base64 ending is read back.
    for (int length = 0; length < 7; ++length)
        items << ClipItem::makeText("rich", QByteArray(length, char(0xF0 + length)), QByteArray("<p>").repeated(length));
    const auto decoded = ClipHistoryFile::decode(ClipHistoryFile::encode(items));
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->items, items);
}

TEST(ClipHistoryFile, OneBadElementMakesTheWholeFileUnreadable)
{
    const QByteArray good = R"({"id":"6F9619FF-8B86-D011-B42D-00C04FC964FF","kind":"text","text":"a","date":1.5,"pinned":false,"signature":"t:x"})";
    // Optional keys may be missing or null, and unknown keys are ignored.
    EXPECT_TRUE(ClipHistoryFile::decode("[" + good + "]"));
    QByteArray withNull = good;
    withNull.replace("\"text\":\"a\"", "\"text\":null,\"appName\":null,\"extra\":1");
    ASSERT_TRUE(ClipHistoryFile::decode("[" + withNull + "]"));
    EXPECT_FALSE(ClipHistoryFile::decode("[" + withNull + "]")->items.first().text);

    const QList<QPair<QByteArray, QByteArray>> breakages{
        {"\"kind\":\"text\"", "\"kind\":\"sound\""},
        {"\"pinned\":false,", ""},
        {"\"date\":1.5", "\"date\":\"today\""},
        {"6F9619FF-8B86-D011-B42D-00C04FC964FF", "not-a-uuid"},
        {"\"text\":\"a\"", "\"text\":7"},
        {"\"text\":\"a\"", "\"rtf\":\"%%%\""},
        {"\"signature\":\"t:x\"", "\"signature\":null"},
    };
    for (const auto& [from, to] : breakages) {
        QByteArray bad = good;
        bad.replace(from, to);
        EXPECT_FALSE(ClipHistoryFile::decode("[" + good + "," + bad + "]")) << bad.constData();
    }
    EXPECT_FALSE(ClipHistoryFile::decode("{}"));
    EXPECT_FALSE(ClipHistoryFile::decode("[" + good));
}

TEST(ClipHistoryFile, ReadsTheJsonOfOtherWritersToo)
{
    // Pretty-printed, escaped slashes and \u escapes (a surrogate pair among them), an
    // escaped key, and nested values under a key Orlo does not know.
    const QByteArray json = "[\n  {\n    \"id\" : \"6f9619ff-8b86-d011-b42d-00c04fc964ff\",\n    \"kind\" : \"files\",\n"
                            "    \"files\" : [ \"\\/tmp\\/caf\\u00e9\", \"\\ud83d\\ude00.txt\" ],\n"
                            "    \"te\\u0078t\" : \"\\/tmp\\/caf\xc3\xa9\\n\\ud83d\\ude00.txt\",\n"
                            "    \"future\" : { \"a\" : [ 1, 2.5e3, -0.5, true, false, null, { } ] },\n"
                            "    \"date\" : -1.25e2, \"pinned\" : true, \"signature\" : \"f:\\u0041\"\n  }\n]\n";
    const auto decoded = ClipHistoryFile::decode(json);
    ASSERT_TRUE(decoded);
    ASSERT_EQ(decoded->items.size(), 1);
    const ClipItem& item = decoded->items.first();
    EXPECT_EQ(item.files(), (QStringList{QStringLiteral("/tmp/caf\u00e9"), QStringLiteral("\U0001F600.txt")}));
    EXPECT_EQ(item.text, QStringLiteral("/tmp/caf\u00e9\n\U0001F600.txt"));
    EXPECT_EQ(item.signature.toString(), "f:A");
    EXPECT_TRUE(item.pinned);
    EXPECT_EQ(item.date.toMSecsSinceEpoch(), ClipHistoryFile::ReferenceDateOffset * 1000 - 125000);

    // Control characters and characters beyond the first plane survive a round trip.
    const ClipItem odd = ClipItem::makeText(QStringLiteral("\u0001\u001f\"\\/\U0001F600\u00e9"), std::nullopt, std::nullopt);
    EXPECT_EQ(ClipHistoryFile::decode(ClipHistoryFile::encode({odd}))->items.first(), odd);
    // A long text is written in pieces; a pair of surrogates on a piece's edge stays one character.
    QString longText = QString((1 << 16) - 1, QLatin1Char('a')) + QStringLiteral("\U0001F600") + QString(3 << 20, QLatin1Char('"'));
    const ClipItem big = ClipItem::makeText(longText, std::nullopt, std::nullopt);
    EXPECT_EQ(ClipHistoryFile::decode(ClipHistoryFile::encode({big, odd}))->items.first(), big);

    EXPECT_FALSE(ClipHistoryFile::decode(QByteArray(1000, '[')));
    EXPECT_FALSE(ClipHistoryFile::decode("[] trailing"));
    EXPECT_FALSE(ClipHistoryFile::decode("[{\"id\":\"6F9619FF-8B86-D011-B42D-00C04FC964FF\",\"kind\":\"text\",\"date\":+1,"
                                         "\"pinned\":false,\"signature\":\"t:x\"}]"));
    EXPECT_TRUE(ClipHistoryFile::decode(" [ ] "));
}

TEST(ClipHistoryFile, CharactersThatNeedEscapingSurviveAtEveryPlaceInALongRun)
{
    // Plain text is written and read several characters at a time: put each character that
    // ends such a run at every offset of a few words' length.
    const QList<QChar> special{u'"', u'\\', u'\n', QChar(0x01), QChar(0x1F), QChar(0x7F), QChar(0xE9), QChar(0x20AC)};
    QList<ClipItem> items;
    for (const QChar c : special)
        for (int at = 0; at < 20; ++at) {
            QString text(24, u'a');
            text[at] = c;
            items << ClipItem::makeText(text, std::nullopt, std::nullopt);
        }
    const QByteArray json = ClipHistoryFile::encode(items);
    const QJsonArray parsed = QJsonDocument::fromJson(json).array();
    ASSERT_EQ(parsed.size(), items.size());
    for (qsizetype i = 0; i < items.size(); ++i) EXPECT_EQ(parsed[i].toObject()["text"].toString(), items[i].text);
    const auto decoded = ClipHistoryFile::decode(json);
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->items, items);
}

TEST(ClipHistoryFile, ALongFileReadInPartsGivesWhatReadingItWholeGives)
{
    // Texts that look like the place where two items meet, once escaped, must not cut the file there.
    QList<ClipItem> items;
    QStringList imageNames;
    QList<qsizetype> pinned;
    for (int i = 0; i < 40; ++i) {
        // Every tenth repeats the content of an older item, in another part.
        const int content = i % 10 == 5 ? i + 1 : i;
        items << ClipItem::makeText(QStringLiteral("%1 },{\"id\":\"%1\" }, {\"id\":").arg(content), std::nullopt, std::nullopt);
        if (i % 7 == 3) {
            items.last() = ClipItem::makeImage(QByteArray::number(i), 1, 1);
            items.last().setImage(imageNames.emplaceBack(QStringLiteral("00000000-0000-0000-0000-%1.png").arg(i, 12, 10, QLatin1Char('0'))));
        }
        if (i % 9 == 4) pinned << (items.last().pinned = true, i);
    }
    // The newest item of each content, counted from the end.
    QHash<quint64, quint64> newest;
    for (qsizetype i = items.size() - 1; i >= 0; --i) newest.insert(items[i].signature.key(), quint64(items.size() - i));
    const QByteArray json = ClipHistoryFile::encode(items);
    EXPECT_GE(ClipHistoryFile::splitIntoParts(json, 1).size(), 2);
    const auto inParts = ClipHistoryFile::decode(json, 1);
    ASSERT_TRUE(inParts);
    EXPECT_EQ(inParts->items, items);
    // What the store indexes and tidies by is as the items stand, whatever part each was in.
    EXPECT_EQ(inParts->newestBySignature, newest);
    EXPECT_LT(inParts->newestBySignature.size(), items.size());
    EXPECT_EQ(inParts->pinned, pinned);
    EXPECT_EQ(inParts->imageNames, imageNames);
    // Read by this thread alone while nobody waits for it, the same.
    const auto alone = ClipHistoryFile::decode(json, 1, std::make_shared<std::atomic<bool>>(false));
    ASSERT_TRUE(alone);
    EXPECT_EQ(alone->items, items);
    EXPECT_EQ(alone->newestBySignature, newest);

    // An object of another writer nested in an item, beginning with an id, is no place to cut:
    // the parts do not read as whole items, and the file is read as one.
    QByteArray nested = ClipHistoryFile::encode(items.mid(0, 2));
    nested.replace(",\"date\":", ",\"future\":[{\"a\":1},{\"id\":\"x\",\"b\":[]}],\"date\":");
    const auto withNested = ClipHistoryFile::decode(nested, 1);
    ASSERT_TRUE(withNested);
    EXPECT_EQ(withNested->items, items.mid(0, 2));

    // A broken item in a later part still makes the whole file unreadable.
    QByteArray broken = json;
    broken.replace(broken.lastIndexOf("\"pinned\":false"), 14, "\"pinned\":0");
    EXPECT_FALSE(ClipHistoryFile::decode(broken, 1));
}

TEST(JsonWriter, NumbersThatAreNotFiniteAreStillJson)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    {
        JsonWriter out(buffer);
        out.put('[');
        out.number(std::nan(""));
        out.put(',');
        out.number(-std::numeric_limits<double>::infinity());
        out.put(',');
        out.number(2.5);
        out.put(']');
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(buffer.data(), &error);
    ASSERT_EQ(error.error, QJsonParseError::NoError) << buffer.data().constData();
    EXPECT_EQ(document.array(), (QJsonArray{0, 0, 2.5}));
}
