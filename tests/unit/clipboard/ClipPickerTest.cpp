#include "FakePlatform.h"
#include "kit/Defaults.h"
#include "clipboard/ClipHistoryFile.h"
#include "clipboard/ClipboardPicker.h"
#include "clipboard/ClipboardSettings.h"
#include "clipboard/ClipboardStore.h"
#include "clipboard/PickerPanel.h"
#include <QLineEdit>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

using namespace orlo;

namespace {

struct ClipPicker : ::testing::Test {
    QTemporaryDir dir;
    fakes::FakePlatform platform;
    Defaults defaults{*platform.settings};
    ClipboardSettings settings{defaults};
    ClipboardStore store{settings, *platform.pasteboard, *platform.workspace, dir.path()};
    ClipboardPicker picker{store, {*platform.keyboardLayout, *platform.screens, *platform.workspace}};
    QList<QPair<QString, bool>> chosen;

    void SetUp() override
    {
        defaults.set("clipboard.maxItems", 100000);
        store.start();
        picker.onPaste = [this](const ClipItem& item, bool plain) { chosen.append({item.title(), plain}); };
        platform.fakeLayout->characters.insert(35, "p");
    }
    // Oldest first, as the user copied them.
    void copy(const QStringList& texts)
    {
        for (const QString& text : texts) {
            platform.fakePasteboard->copyText(text);
            store.poll();
        }
    }
    void copyImage()
    {
        store.insert(ClipItem::makeImage("png" + QByteArray::number(store.items().size()), 10, 10), {});
    }
    QStringList rows()
    {
        picker.model().finishFiltering();
        QStringList out;
        for (int i = 0; i < picker.model().count(); ++i) out << picker.model().item(i).title();
        return out;
    }
    void type(const QString& text) { picker.panel()->searchField()->setText(text); }
    // A key as the layout reports it (canonical key code and modifier flags); whether the
    // picker used it rather than passing it on to the search field.
    bool press(quint32 keyCode, quint64 flags = 0)
    {
        QKeyEvent event(QEvent::KeyPress, Qt::Key_unknown, Qt::NoModifier, keyCode, 0, quint32(flags));
        return picker.handleKey(&event);
    }
};

// A store and its picker over a saved history, loaded as at start.
struct Saved {
    QTemporaryDir folder;
    std::unique_ptr<ClipboardStore> store;
    std::unique_ptr<ClipboardPicker> picker;
    Saved(ClipPicker& test, const QList<ClipItem>& items)
    {
        EXPECT_TRUE(ClipHistoryFile(folder.filePath("history.json")).write(items, nullptr));
        auto& p = test.platform;
        store = std::make_unique<ClipboardStore>(test.settings, *p.pasteboard, *p.workspace, folder.path());
        store->start();
        store->load();
        picker = std::make_unique<ClipboardPicker>(*store, ClipboardPicker::Ports{*p.keyboardLayout, *p.screens, *p.workspace});
    }
};

}  // namespace

TEST_F(ClipPicker, RowsMatchTextSourceFileNamesAndTheWordImage)
{
    copy({"Alpha beta", "gamma"});
    platform.fakeWorkspace->front = AppInfo{1, "org.example.Mail", "Mail"};
    copy({"delta"});
    copyImage();
    store.insert(ClipItem::makeFiles({"/home/u/Report.PDF"}), {});
    picker.show();

    type("   ");
    EXPECT_EQ(rows().size(), 5);
    type("ima");
    EXPECT_EQ(rows(), QStringList{QStringLiteral("Image 10\u00D710")});
    type("BETA");
    EXPECT_EQ(rows(), QStringList{"Alpha beta"});
    type("mail");
    EXPECT_EQ(rows(), QStringList{"delta"});
    type("report.pdf");
    EXPECT_EQ(rows(), QStringList{"Report.PDF"});

    // A pinned match comes before newer unpinned ones.
    store.togglePin(store.items().last());  // "Alpha beta"
    type("ta");
    EXPECT_EQ(rows(), (QStringList{"Alpha beta", "delta"}));
}

TEST_F(ClipPicker, SlicedAndNarrowedFilteringFindsWhatAFullScanFinds)
{
    // Enough items that a search takes several slices, loaded as from a saved history.
    QList<ClipItem> items;
    auto* random = QRandomGenerator::global();
    const QString letters = "abcdefghij ";
    for (int i = 0; i < 30000; ++i) {
        QString text;
        for (int n = 10 + int(random->bounded(200)); n > 0; --n) text += letters[int(random->bounded(letters.size()))];
        items << ClipItem::makeText(text, std::nullopt, std::nullopt);
        items.last().pinned = i % 997 == 0;
    }
    // A huge copy is searched in pieces: a match across the edge of two pieces is still found.
    QString huge(3 * PickerModel::PieceChars, 'x');
    huge[PickerModel::PieceChars - 1] = 'j';
    huge[PickerModel::PieceChars] = 'A';
    items.insert(5, ClipItem::makeText(huge, std::nullopt, std::nullopt));
    Saved saved(*this, items);
    ClipboardPicker& bigPicker = *saved.picker;
    bigPicker.show();
    PickerModel& model = bigPicker.model();
    QLineEdit* search = bigPicker.panel()->searchField();

    auto expected = [&](const QString& query) {
        QStringList pinned, unpinned;
        for (const ClipItem& item : items)
            if (item.text->contains(query, Qt::CaseInsensitive)) (item.pinned ? pinned : unpinned) << item.title();
        return pinned + unpinned;
    };
    auto rowsOf = [&] {
        QStringList out;
        for (int i = 0; i < model.count(); ++i) out << model.item(i).title();
        return out;
    };
    // Typed one key at a time, each key interrupting the pass of the one before.
    bool interrupted = false;
    for (const QString query : {"a", "ab", "abc", "abcd", "abcde", "abcd", "j", "jA"}) {
        search->setText(query);
        interrupted |= model.isFiltering();
        QCoreApplication::processEvents();
    }
    QSignalSpy finished(&model, &PickerModel::filteringFinished);
    ASSERT_TRUE(!model.isFiltering() || finished.wait(5000));
    EXPECT_EQ(rowsOf(), expected("ja"));
    search->setText("bcd");
    model.finishFiltering();
    EXPECT_EQ(rowsOf(), expected("bcd"));
    EXPECT_TRUE(interrupted) << "the history is too small to need more than one slice";
}

TEST_F(ClipPicker, ArrowsDigitsAndReturnChooseRows)
{
    copy({"five", "four", "three", "two", "one"});
    picker.show();
    EXPECT_EQ(picker.model().selection(), 0);
    press(KeyCode::UpArrow);
    EXPECT_EQ(picker.model().selection(), 0);
    for (int i = 0; i < 6; ++i) press(KeyCode::DownArrow);
    EXPECT_EQ(picker.model().selection(), 4);

    EXPECT_TRUE(press(21));  // the 4 key
    EXPECT_EQ(chosen.takeLast(), qMakePair(QString("four"), false));
    press(KeyCode::Return, ModifierFlag::Shift);
    EXPECT_EQ(chosen.takeLast(), qMakePair(QString("five"), true));
    press(86);  // keypad 4
    EXPECT_EQ(chosen.takeLast().first, "four");
    // With modifiers, or once a search has begun, a digit is typed, not chosen.
    EXPECT_FALSE(press(21, ModifierFlag::Option));
    type("o");
    EXPECT_FALSE(press(18));
    EXPECT_TRUE(chosen.isEmpty());

    press(KeyCode::Escape);
    EXPECT_FALSE(picker.isVisible());
}

TEST_F(ClipPicker, DigitBeyondTheRowsGoesToTheSearch)
{
    copy({"c", "b", "a"});
    picker.show();
    EXPECT_FALSE(press(21));
    EXPECT_TRUE(chosen.isEmpty());
}

TEST_F(ClipPicker, CommandKeysPinAndDelete)
{
    copy({"three", "two", "one"});
    picker.show();
    press(KeyCode::DownArrow);
    EXPECT_TRUE(press(35, ModifierFlag::Command));  // Command-P
    EXPECT_TRUE(store.items().at(1).pinned);
    EXPECT_EQ(rows(), (QStringList{"two", "one", "three"}));

    // Plain Delete edits the search; Command-Delete on the last row selects the new last row.
    EXPECT_FALSE(press(KeyCode::Delete));
    picker.model().setSelection(2);
    EXPECT_TRUE(press(KeyCode::Delete, ModifierFlag::Command));
    EXPECT_EQ(rows(), (QStringList{"two", "one"}));
    EXPECT_EQ(picker.model().selection(), 1);
    press(KeyCode::Delete, ModifierFlag::Command);
    press(KeyCode::Delete, ModifierFlag::Command);
    EXPECT_EQ(picker.model().count(), 0);
    EXPECT_EQ(picker.model().selection(), 0);
    press(KeyCode::Return);
    EXPECT_TRUE(chosen.isEmpty());
}

TEST(ClipPickerPlacement, HangsBelowThePointerAndStaysOnItsScreen)
{
    // Two screens in screen coordinates (y up from the primary's bottom): 1440x900 with a
    // 24-point dock at the bottom, and 3440x1440 to its right, top-aligned.
    ScreenInfo left{{0, 0, 1440, 900}, {0, 24, 1440, 876}, 0, false, {}};
    ScreenInfo right{{1440, -540, 3440, 1440}, {1440, -540, 3440, 1440}, 0, false, {}};
    const QList<ScreenInfo> screens{left, right};
    const QRectF primary(0, 0, 1440, 900);

    EXPECT_EQ(ClipboardPicker::placement({300, 200}, screens, primary), QPoint(276, 188));
    // Bottom right corner of the left screen: kept above its dock, 8 points in.
    EXPECT_EQ(ClipboardPicker::placement({1430, 890}, screens, primary), QPoint(1440 - 420 - 8, 900 - 24 - 480 - 8));
    // Top left corner of the right screen.
    EXPECT_EQ(ClipboardPicker::placement({1441, 1}, screens, primary), QPoint(1448, 8));
    // Below the left screen's bottom is the right screen only.
    EXPECT_EQ(ClipboardPicker::placement({2000, 1400}, screens, primary), QPoint(1976, 1440 - 480 - 8));
    // On a screen too small for the panel, the right and top bounds win.
    const QList<ScreenInfo> tiny{{{0, 0, 400, 300}, {0, 0, 400, 300}, 0, false, {}}};
    EXPECT_EQ(ClipboardPicker::placement({10, 10}, tiny, QRectF(0, 0, 400, 300)), QPoint(400 - 420 - 8, 8));
}

TEST_F(ClipPicker, ALongHistoryIsShownAPageAtATimeInPickerOrder)
{
    QList<ClipItem> items;
    for (int i = 0; i < 1000; ++i) items << ClipItem::makeText(QStringLiteral("item %1").arg(i), std::nullopt, std::nullopt);
    items[998].pinned = true;
    items[400].pinned = true;
    Saved saved(*this, items);
    ClipboardStore& big = *saved.store;
    ClipboardPicker& bigPicker = *saved.picker;
    bigPicker.show();
    PickerModel& model = bigPicker.model();

    auto expected = [&] {
        QStringList pinned, unpinned;
        for (const ClipItem& item : big.items()) (item.pinned ? pinned : unpinned) << item.title();
        return pinned + unpinned;
    };
    auto all = [&] {
        QStringList out;
        for (int i = 0; i < model.count(); ++i) out << model.item(i).title();
        return out;
    };
    EXPECT_EQ(model.count(), 1000);
    EXPECT_EQ(model.rowCount(), PickerModel::PageRows);
    EXPECT_EQ(all(), expected());

    // Going down past the page tells the view of the next one.
    model.setSelection(PickerModel::PageRows + 5);
    EXPECT_GT(model.rowCount(), PickerModel::PageRows + 5);
    EXPECT_EQ(model.data(model.index(PickerModel::PageRows + 5), Qt::DisplayRole).toString(), expected()[PickerModel::PageRows + 5]);

    // Changes made while the picker is closed show when it opens again: copied again, pinned, new.
    bigPicker.close();
    big.copyToPasteboard(big.items().at(700), false);
    big.togglePin(big.items().at(900));
    platform.fakePasteboard->copyText("newest");
    big.poll();
    bigPicker.show();
    EXPECT_EQ(model.rowCount(), PickerModel::PageRows);
    EXPECT_EQ(all(), expected());
    EXPECT_EQ(model.item(3).title(), "newest");

    // A search walks the same order; clearing it goes back to every item.
    bigPicker.panel()->searchField()->setText("item 9");
    model.finishFiltering();
    QStringList nines;
    for (const QString& title : expected())
        if (title.startsWith("item 9")) nines << title;
    EXPECT_EQ(all(), nines);
    bigPicker.panel()->searchField()->setText("");
    EXPECT_EQ(all(), expected());
}
