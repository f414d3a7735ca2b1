#pragma once
#include "clipboard/ClipItem.h"
#include "clipboard/TextMatcher.h"
#include <QAbstractListModel>
#include <cstdint>
#include <vector>

namespace orlo {

class ClipboardStore;

// The picker's rows: the history items that match the search text, pinned ones first, each
// group in history order; and the selected row.
//
// Nothing here grows with the history while nothing is searched for: the rows are put in
// order as far as they are looked at, and the list view is told of a page of them at a
// time (more as it scrolls), so that opening the picker after a change costs the same with
// a long history as with a short one.
//
// A search looks through the history in slices of a few milliseconds, so typing never
// stalls the picker: the first matches show at once and later ones are added as they are
// found, each slice shared with a helper thread. A search that narrows the previous one only
// looks among the previous matches.
class PickerModel : public QAbstractListModel {
    Q_OBJECT
public:
    static constexpr int SliceMs = 2;
    // The slice looked through within the keystroke itself, before its rows are painted.
    static constexpr int FirstSliceMs = 1;
    // Rows the list view is told of at once.
    static constexpr int PageRows = 100;
    // Texts longer than this are searched in pieces of this many characters.
    static constexpr qsizetype PieceChars = 1 << 20;
    // While every match is looked for, items are looked through many at a time, on two
    // threads: up to so many, or so many characters of text, a millisecond or two.
    static constexpr size_t BatchItems = 8192;
    static constexpr qsizetype BatchChars = 2 << 20;

    explicit PickerModel(ClipboardStore& store, QObject* parent = nullptr);

    QString query() const { return query_; }
    void setQuery(const QString& query);
    int selection() const { return selection_; }
    void setSelection(int row);
    int openCount() const { return openCount_; }
    // A new opening: empty search, first row selected.
    void open();
    // While not live (the picker is closed), changes of the history are only noted, and
    // the rows are brought up to date when it is live again.
    void setLive(bool live);

    // Every row: while nothing is searched for, every item; else the matches found so far.
    int count() const;
    const ClipItem& item(int row) const;
    // Makes sure the list view knows of the row.
    void reveal(int row);
    // Whether matches are still being looked for.
    bool isFiltering() const;
    // Looks through the rest at once.
    void finishFiltering();

    // Whether an item matches a trimmed, non-empty search text.
    static bool matches(const ClipItem& item, const TextMatcher& query);
    // The same, leaving out the item's text.
    static bool matchesBesidesText(const ClipItem& item, const TextMatcher& query);

    // What the list view sees: the rows it has been told of.
    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool canFetchMore(const QModelIndex& parent) const override;
    void fetchMore(const QModelIndex& parent) override;

signals:
    void queryChanged(const QString& query);
    void selectionChanged(int row);
    void openCountChanged(int count);
    void filteringFinished();

private:
    // Walks the whole history in picker order without listing it first: the pinned items,
    // then the others.
    struct Walk {
        std::vector<qsizetype> pinned;  // positions, newest first
        size_t pinnedTaken = 0;
        qsizetype next = 0;  // the next position among the unpinned
        bool done(const QList<ClipItem>& items);
        int peek(const QList<ClipItem>& items);
        void advance();
        // Roughly the position n candidates on, or -1: for asking for its text early.
        qsizetype ahead(const QList<ClipItem>& items, size_t n) const;
    };

    void refresh();
    void refilter(bool narrowing);
    // Puts the rows in order up to this one, while nothing is searched for.
    void orderUpTo(int row) const;
    // The next matches among the candidates, looking until the time budget is spent (or to
    // the end with a negative budget), or until enough are found.
    std::vector<int> scan(qint64 budgetMs, size_t enough = SIZE_MAX);
    static bool isHuge(const ClipItem& item);
    // The next candidates, up to `most` or BatchChars; short of a huge text unless `hugeToo`.
    std::vector<int> takeCandidates(size_t most, bool hugeToo);
    // Asks for the text of the candidate a few places on, to have it at hand when it is looked at.
    void prefetchAhead() const;
    bool hasCandidate() const;
    int candidate();
    void nextCandidate();
    void append(const std::vector<int>& found);
    // Tells the list view of the rows it asked for that are known by now.
    void showWanted();
    void continueLater();

    ClipboardStore& store_;
    QString query_;
    QString active_;  // the trimmed query the rows are for
    TextMatcher matcher_;
    int selection_ = 0;
    int openCount_ = 0;
    mutable std::vector<int> rows_;  // the rows found or put in order so far: indices into the store's items
    mutable Walk walk_;              // the rest of the history, after rows_ (nothing searched) or candidates_
    std::vector<int> candidates_;    // a narrowing search: the previous matches, looked through before walk_
    size_t scanned_ = 0;             // of candidates_
    qsizetype textOffset_ = 0;       // where the search of a huge text goes on
    int shown_ = 0;                  // rows the list view knows of
    int wanted_ = PageRows;          // rows the list view asked for
    bool continuation_ = false;
    bool live_ = false;
    bool stale_ = true;
};

}  // namespace orlo
