#pragma once
#include "switcher/SwitchItem.h"
#include "switcher/SwitcherSettings.h"
#include <QList>
#include <QObject>
#include <optional>

namespace orlo {

// One opening of the switcher: the items listed, the search typed so far, the items that
// pass it and which of them is selected. Every change is announced by changed().
class SwitcherSession : public QObject {
    Q_OBJECT
public:
    SwitcherSession(QList<SwitchItem> items, SwitcherSettings::Layout layout, QObject* parent = nullptr);

    const QList<SwitchItem>& items() const { return items_; }
    void setItems(QList<SwitchItem> items);
    SwitcherSettings::Layout layout() const { return layout_; }
    const QList<SwitchItem>& filtered() const { return filtered_; }
    int selection() const { return selection_; }
    void setSelection(int selection);
    bool sticky() const { return sticky_; }
    void setSticky(bool sticky);
    const QString& query() const { return query_; }
    void setQuery(const QString& query);
    std::optional<SwitchItem> selected() const;

    // Steps the selection, wrapping around at both ends.
    void move(int delta);
    // Columns of the grid, also in the list layout (where Up and Down step by one).
    int columns() const;
    // The user's editing: appending typed text, and removing the last character.
    void type(const QString& text);
    void backspace();

    // Items whose title and application name contain the query, then those that hold its
    // characters in order.
    static QList<SwitchItem> filter(const QList<SwitchItem>& items, const QString& query);
    // Whether the needle's user-perceived characters appear in the haystack in order.
    static bool isSubsequence(const QString& needle, const QString& haystack);

signals:
    void changed();

private:
    void refilter();

    QList<SwitchItem> items_;
    SwitcherSettings::Layout layout_;
    QList<SwitchItem> filtered_;
    int selection_ = 0;
    bool sticky_ = false;
    QString query_;
};

}  // namespace orlo
