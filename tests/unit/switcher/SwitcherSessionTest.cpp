#include "switcher/SwitcherSession.h"
#include <QSignalSpy>
#include <gtest/gtest.h>

using namespace orlo;

namespace {
SwitchItem item(const QString& id, const QString& title, const QString& app)
{
    SwitchItem i;
    i.id = id;
    i.title = title;
    i.appName = app;
    i.kind = SwitchItem::Window{};
    return i;
}

QStringList ids(const QList<SwitchItem>& items)
{
    QStringList out;
    for (const SwitchItem& i : items) out << i.id;
    return out;
}

QList<SwitchItem> five()
{
    return {item("a", "Alpha", "One"), item("b", "Beta", "Two"), item("c", "Gamma", "Three"), item("d", "Delta", "Four"),
            item("e", "Epsilon", "Five")};
}
}  // namespace

TEST(SwitcherSession, DirectMatchesComeBeforeLooseOnes)
{
    const QList<SwitchItem> items{item("mail", "Mail — Inbox", "Mail"), item("notes", "Notes", "Notes")};
    EXPECT_EQ(ids(SwitcherSession::filter(items, "in")), QStringList{"mail"});
    EXPECT_EQ(ids(SwitcherSession::filter(items, "nts")), QStringList{"notes"});
    EXPECT_EQ(ids(SwitcherSession::filter(items, "  ")), (QStringList{"mail", "notes"}));

    const QList<SwitchItem> spaced{item("loose", "a then b", "X"), item("direct", "an a b here", "X")};
    EXPECT_EQ(ids(SwitcherSession::filter(spaced, "A B")), (QStringList{"direct", "loose"}));
}

TEST(SwitcherSession, CharactersAreComparedWhole)
{
    // "é" written as e and a combining accent is one character: it is not a plain e.
    const QString decomposed = QStringLiteral("Cafe\u0301 menu");
    EXPECT_FALSE(SwitcherSession::isSubsequence("cafem", decomposed.toLower()));
    EXPECT_TRUE(SwitcherSession::isSubsequence(QStringLiteral("cafe\u0301m"), decomposed.toLower()));
    EXPECT_TRUE(SwitcherSession::filter({item("x", QStringLiteral("Cafe\u0301"), "App")}, "cafe").isEmpty());
    EXPECT_TRUE(SwitcherSession::isSubsequence("", "anything"));
    EXPECT_FALSE(SwitcherSession::isSubsequence("ba", "ab"));
}

TEST(SwitcherSession, SelectionFollowsItsItemAndWrapsAround)
{
    SwitcherSession session(five(), SwitcherSettings::Layout::List);
    session.setSelection(4);
    session.move(6);
    EXPECT_EQ(session.selection(), 0);
    session.move(-1);
    EXPECT_EQ(session.selection(), 4);

    session.setSelection(3);  // Delta
    session.setQuery("ta");   // Beta, Delta directly
    EXPECT_EQ(ids(session.filtered()), (QStringList{"b", "d"}));
    EXPECT_EQ(session.selected()->id, "d");

    session.setQuery("zzz");
    EXPECT_TRUE(session.filtered().isEmpty());
    EXPECT_EQ(session.selection(), 0);
    EXPECT_FALSE(session.selected());
    session.move(1);
    EXPECT_EQ(session.selection(), 0);

    // New items (tabs arriving) keep the selected item by its id.
    session.setQuery("");
    session.setSelection(2);
    QList<SwitchItem> more = five();
    more.prepend(item("t", "Tab", "Browser"));
    session.setItems(more);
    EXPECT_EQ(session.selected()->id, "c");
}

TEST(SwitcherSession, EditingMakesTheSessionStickyOnlyWhenTheQueryChanges)
{
    SwitcherSession session(five(), SwitcherSettings::Layout::Grid);
    QSignalSpy changes(&session, &SwitcherSession::changed);
    session.backspace();
    EXPECT_FALSE(session.sticky());
    EXPECT_EQ(changes.count(), 0);

    session.setSelection(2);
    session.type("e");
    EXPECT_TRUE(session.sticky());
    EXPECT_EQ(session.selection(), 0);
    session.type(QStringLiteral("\u0301"));  // a combining mark joins the last character
    session.backspace();
    EXPECT_EQ(session.query(), "");
    EXPECT_TRUE(session.sticky());
    EXPECT_EQ(session.columns(), 5);
}
