#include "clipboard/PickerModel.h"
#include "clipboard/ClipboardStore.h"
#include "clipboard/SharedMatching.h"
#include <QElapsedTimer>
#include <QTimer>

namespace orlo {

PickerModel::PickerModel(ClipboardStore& store, QObject* parent) : QAbstractListModel(parent), store_(store)
{
    connect(&store_, &ClipboardStore::itemsChanged, this, [this] {
        stale_ = true;
        if (live_) refresh();
    });
}

void PickerModel::setLive(bool live)
{
    live_ = live;
    if (live_ && stale_) refresh();
}

void PickerModel::refresh()
{
    stale_ = false;
    refilter(false);
}

bool PickerModel::Walk::done(const QList<ClipItem>& items)
{
    return pinnedTaken == pinned.size() && peek(items) == items.size();
}

int PickerModel::Walk::peek(const QList<ClipItem>& items)
{
    if (pinnedTaken < pinned.size()) return int(pinned[pinnedTaken]);
    while (next < items.size() && items[next].pinned) ++next;
    return int(next);
}

qsizetype PickerModel::Walk::ahead(const QList<ClipItem>& items, size_t n) const
{
    if (pinnedTaken + n < pinned.size()) return qsizetype(pinned[pinnedTaken + n]);
    if (pinnedTaken < pinned.size()) return -1;  // somewhere past the pinned ones: not worth finding
    return next + qsizetype(n) < items.size() ? next + qsizetype(n) : -1;
}

void PickerModel::Walk::advance()
{
    if (pinnedTaken < pinned.size()) ++pinnedTaken;
    else ++next;
}

int PickerModel::count() const { return active_.isEmpty() ? int(store_.items().size()) : int(rows_.size()); }

const ClipItem& PickerModel::item(int row) const
{
    orderUpTo(row);
    return store_.items()[rows_[size_t(row)]];
}

void PickerModel::orderUpTo(int row) const
{
    if (!active_.isEmpty()) return;
    const QList<ClipItem>& items = store_.items();
    while (int(rows_.size()) <= row && !walk_.done(items)) {
        rows_.push_back(walk_.peek(items));
        walk_.advance();
    }
}

bool PickerModel::matches(const ClipItem& item, const TextMatcher& query)
{
    return (item.text && query.foundIn(*item.text)) || matchesBesidesText(item, query);
}

bool PickerModel::matchesBesidesText(const ClipItem& item, const TextMatcher& query)
{
    auto in = [&query](QStringView text) { return query.foundIn(text); };
    if (item.appName && in(*item.appName)) return true;
    // A files item's text holds its paths, and so its file names.
    if (item.files() && !item.text)
        for (const QString& name : item.fileNames())
            if (in(name)) return true;
    return item.kind == ClipItem::Kind::Image && in(u"image");
}

void PickerModel::setQuery(const QString& query)
{
    if (query == query_) return;
    query_ = query;
    const QString trimmed = query.trimmed();
    // A longer search finds a subset of what a search it contains found.
    const bool narrowing = !active_.isEmpty() && trimmed.contains(active_, Qt::CaseInsensitive);
    if (trimmed != active_) {
        active_ = trimmed;
        matcher_ = TextMatcher(active_);
        refilter(narrowing);
    }
    emit queryChanged(query_);
    setSelection(0);
}

void PickerModel::refilter(bool narrowing)
{
    if (narrowing) {
        // Earlier matches, then whatever the interrupted pass had not looked at yet.
        std::vector<int> next = rows_;
        next.insert(next.end(), candidates_.begin() + qsizetype(scanned_), candidates_.end());
        candidates_ = std::move(next);
    } else {
        candidates_.clear();
        walk_ = Walk{store_.pinnedPositions()};
    }
    beginResetModel();
    rows_.clear();
    scanned_ = 0;
    textOffset_ = 0;
    shown_ = 0;
    wanted_ = PageRows;
    // The keystroke waits only for the first page of matches; the rest are looked for after its rows are painted.
    if (!active_.isEmpty()) rows_ = scan(FirstSliceMs, size_t(wanted_));
    shown_ = std::min(count(), wanted_);
    orderUpTo(shown_ - 1);
    endResetModel();
    if (selection_ >= count()) setSelection(std::max(count() - 1, 0));
    if (isFiltering()) continueLater();
    else emit filteringFinished();
}

bool PickerModel::hasCandidate() const { return scanned_ < candidates_.size() || !walk_.done(store_.items()); }

int PickerModel::candidate() { return scanned_ < candidates_.size() ? candidates_[scanned_] : walk_.peek(store_.items()); }

void PickerModel::nextCandidate()
{
    if (scanned_ < candidates_.size()) ++scanned_;
    else walk_.advance();
}

bool PickerModel::isFiltering() const { return !active_.isEmpty() && hasCandidate(); }

bool PickerModel::isHuge(const ClipItem& item) { return item.text && item.text->size() > PieceChars; }

std::vector<int> PickerModel::takeCandidates(size_t most, bool hugeToo)
{
    const QList<ClipItem>& items = store_.items();
    std::vector<int> taken;
    taken.reserve(most);
    qsizetype chars = 0;
    while (taken.size() < most && chars < BatchChars && hasCandidate()) {
        const int index = candidate();
        if (!hugeToo && isHuge(items[index])) break;
        taken.push_back(index);
        chars += items[index].text ? items[index].text->size() : 0;
        nextCandidate();
    }
    return taken;
}

void PickerModel::prefetchAhead() const
{
    const size_t ahead = SharedMatching::Ahead;
    const QList<ClipItem>& items = store_.items();
    const qsizetype later = scanned_ < candidates_.size() ? (scanned_ + ahead < candidates_.size() ? candidates_[scanned_ + ahead] : -1)
                                                          : walk_.ahead(items, ahead);
    if (later >= 0) SharedMatching::prefetchText(items[later]);
}

std::vector<int> PickerModel::scan(qint64 budgetMs, size_t enough)
{
    const QList<ClipItem>& items = store_.items();
    std::vector<int> found;
    QElapsedTimer clock;
    clock.start();
    int looked = 0;
    while (hasCandidate()) {
        if (enough == SIZE_MAX) {
            // Looking for every match: many items at a time, shared with a helper thread.
            const std::vector<int> batch = takeCandidates(BatchItems, budgetMs < 0);
            if (!batch.empty()) {
                const auto matched = SharedMatching::matches(items, batch, [this](const ClipItem& item) { return matches(item, matcher_); });
                for (size_t i = 0; i < batch.size(); ++i)
                    if (matched[i]) found.push_back(batch[i]);
                if (budgetMs >= 0 && clock.elapsed() >= budgetMs) break;
                continue;
            }
        }
        const int index = candidate();
        const ClipItem& item = items[index];
        if (budgetMs >= 0 && isHuge(item)) {
            // A huge text is searched a piece at a time (pieces overlap by the query's length).
            const QStringView text(*item.text);
            bool inText = false;
            while (!inText && textOffset_ < text.size()) {
                const qsizetype length = std::min(text.size() - textOffset_, PieceChars + active_.size());
                inText = matcher_.foundIn(text.sliced(textOffset_, length));
                textOffset_ += PieceChars;
                if (!inText && textOffset_ < text.size() && clock.elapsed() >= budgetMs) return found;
            }
            textOffset_ = 0;
            nextCandidate();
            if (inText || matchesBesidesText(item, matcher_)) found.push_back(index);
            if (clock.elapsed() >= budgetMs) break;
            continue;
        }
        prefetchAhead();
        nextCandidate();
        if (matches(item, matcher_)) found.push_back(index);
        if (found.size() >= enough) break;
        if (budgetMs >= 0 && (++looked & 255) == 0 && clock.elapsed() >= budgetMs) break;
    }
    return found;
}

void PickerModel::append(const std::vector<int>& found)
{
    rows_.insert(rows_.end(), found.begin(), found.end());
    showWanted();
}

void PickerModel::showWanted()
{
    const int target = std::min(count(), wanted_);
    if (target <= shown_) return;
    orderUpTo(target - 1);
    beginInsertRows({}, shown_, target - 1);
    shown_ = target;
    endInsertRows();
}

void PickerModel::reveal(int row)
{
    if (row < shown_ || row >= count()) return;
    wanted_ = std::max(wanted_, (row / PageRows + 1) * PageRows);
    showWanted();
}

bool PickerModel::canFetchMore(const QModelIndex& parent) const { return !parent.isValid() && shown_ < count(); }

void PickerModel::fetchMore(const QModelIndex& parent)
{
    if (parent.isValid()) return;
    wanted_ = shown_ + PageRows;
    showWanted();
}

void PickerModel::continueLater()
{
    if (continuation_) return;
    continuation_ = true;
    QTimer::singleShot(0, this, [this] {
        continuation_ = false;
        if (!isFiltering()) return;
        append(scan(SliceMs));
        if (isFiltering()) continueLater();
        else emit filteringFinished();
    });
}

void PickerModel::finishFiltering()
{
    if (!isFiltering()) return;
    append(scan(-1));
    emit filteringFinished();
}

void PickerModel::setSelection(int row)
{
    if (row == selection_) return;
    selection_ = row;
    emit selectionChanged(row);
}

void PickerModel::open()
{
    setQuery(QString());
    setSelection(0);
    emit openCountChanged(++openCount_);
}

int PickerModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : shown_; }

QVariant PickerModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= shown_) return {};
    if (role == Qt::DisplayRole || role == Qt::AccessibleTextRole) return item(index.row()).title();
    return {};
}

}  // namespace orlo
