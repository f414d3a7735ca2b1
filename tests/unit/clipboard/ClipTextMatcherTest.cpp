#include "clipboard/TextMatcher.h"
#include <QRandomGenerator>
#include <QStringList>
#include <gtest/gtest.h>

using namespace orlo;

// The matcher finds exactly what Qt's case-insensitive search finds, also where case
// folding is not a matter of ASCII letters.
TEST(ClipTextMatcher, FindsWhatACaseInsensitiveSearchFinds)
{
    const QStringList texts{
        "",
        "Meeting TOMORROW at 10",
        "zÜRICH, naïve café",
        "KELVIN \u212A and long \u017F",  // fold to k and s
        "Stra\u00DFe STRASSE",
        "\u03A3\u03AF\u03C3\u03C5\u03C6\u03BF\u03C2 \u0130stanbul",
        QString::fromUcs4(U"\U00010400\U00010428 deseret"),
        "aaab",
        "edge",
    };
    const QStringList queries{"m",  "meeting t", "TOMORROW AT 10", "zü",   "Zürich",          "CAFÉ",   "k",  "kelvin k",
                              "s",  "ſ",         "STRASSE",        "ß",    "\u03C3\u03C5",    "σίσυφος", "i",  "istanbul",
                              "aab", "ab",       "b",              "edge!", QString::fromUcs4(U"\U00010428"), "x", "edge"};
    for (const QString& text : texts)
        for (const QString& query : queries)
            EXPECT_EQ(TextMatcher(query).foundIn(text), text.contains(query, Qt::CaseInsensitive))
                << qPrintable(query) << " in " << qPrintable(text);

    // Random texts of few letters, so that partial matches abound.
    auto* random = QRandomGenerator::global();
    const QString letters = "aAbB \u00E4\u00C4";
    auto randomText = [&](int length) {
        QString text;
        for (int n = 0; n < length; ++n) text += letters[int(random->bounded(letters.size()))];
        return text;
    };
    for (int i = 0; i < 2000; ++i) {
        const QString text = randomText(int(random->bounded(70)));
        const QString query = randomText(1 + int(random->bounded(4)));
        ASSERT_EQ(TextMatcher(query).foundIn(text), text.contains(query, Qt::CaseInsensitive))
            << qPrintable(query) << " in " << qPrintable(text);
    }
}
