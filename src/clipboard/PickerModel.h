#pragma once
#include "clipboard/ClipItem.h"
#include <QAbstractListModel>
#include <vector>

namespace orlo {

class ClipboardStore;

// The picker's rows: the history items that match the search text, pinned ones first, each
// group in history order; and the selected row.
//
// A long history is filtered in slices of a few milliseconds, so typing never stalls the
// picker: the first matches show at once and later ones are appended as they are found.
// A search that narrows the previous one only looks among the previous matches.
class PickerModel : public QAbstractListModel {
    Q_OBJECT
public:
    static constexpr int SliceMs = 2;
    // Texts longer than this are searched in pieces of this many characters.
    static constexpr qsizetype PieceChars = 1 << 20;

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

    int count() const { return int(rows_.size()); }
    const ClipItem& item(int row) const;
    // Whether matches are still being looked for.
    bool isFiltering() const { return scanned_ < candidates_.size(); }
    // Looks through the rest at once.
    void finishFiltering();

    // Whether an item matches a trimmed, non-empty search text.
    static bool matches(const ClipItem& item, QStringView query);
    // The same, leaving out the item's text.
    static bool matchesBesidesText(const ClipItem& item, QStringView query);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

signals:
    void queryChanged(const QString& query);
    void selectionChanged(int row);
    void openCountChanged(int count);
    void filteringFinished();

private:
    void refresh();
    void rebuildOrder();
    void refilter(bool narrowing);
    // The next matches among the candidates, looking until the time budget is spent (or to
    // the end with a negative budget).
    std::vector<int> scan(qint64 budgetMs);
    void append(const std::vector<int>& found);
    void continueLater();

    ClipboardStore& store_;
    QString query_;
    QString active_;  // the trimmed query the rows are for
    int selection_ = 0;
    int openCount_ = 0;
    std::vector<int> order_;       // every item, pinned first: indices into the store's items
    std::vector<int> rows_;        // the matches found so far
    std::vector<int> candidates_;  // what the running pass looks through
    size_t scanned_ = 0;
    qsizetype textOffset_ = 0;  // where the search of a huge text goes on
    bool continuation_ = false;
    bool live_ = false;
    bool stale_ = true;
};

}  // namespace orlo
