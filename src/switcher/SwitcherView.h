#pragma once
#include "switcher/SwitchItem.h"
#include <QWidget>
#include <functional>

namespace orlo {

class SwitcherSession;

// The switcher's panel: the search line, the items as rows or tiles, and the key hints. It
// draws straight from the session and redraws whenever the session changes.
class SwitcherView : public QWidget {
    Q_OBJECT
public:
    static constexpr int SearchHeight = 52, HintHeight = 30, RowHeight = 46, TileWidth = 132, TileHeight = 116;
    static constexpr int Spacing = 8, VisibleRows = 10, VisibleTileRows = 3;

    // takesFocus: the panel is shown with the keyboard focus and cancels when it loses it.
    SwitcherView(bool translucent, bool takesFocus, QWidget* parent = nullptr);

    void setSession(SwitcherSession* session, std::function<void(const SwitchItem&)> onPick, std::function<void()> onCancel);

    // What the panel says where it has no items, and on its hint line.
    QString emptyText() const;
    QString hintText() const;
    // The item drawn at a point of the panel, -1 for none.
    int itemAt(const QPoint& point) const;
    // Closes the opening, as a click elsewhere does.
    void cancel();
    // The first row (of rows or tiles) on show: the selection is always in view.
    int firstVisibleRow() const { return firstRow_; }

signals:
    // The panel of an opening has the keyboard focus.
    void focused();

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    QRect itemsArea() const;
    QRect itemRect(int index) const;
    void scrollToSelection();
    QColor accent() const;
    void paintSearch(QPainter& p);
    void paintRow(QPainter& p, const SwitchItem& item, const QRect& r, bool selected);
    void paintTile(QPainter& p, const SwitchItem& item, const QRect& r, bool selected);
    void paintBadge(QPainter& p, const SwitchItem& item, const QRect& icon);

    bool translucent_;
    bool takesFocus_;
    bool hadFocus_ = false;
    SwitcherSession* session_ = nullptr;
    std::function<void(const SwitchItem&)> onPick_;
    std::function<void()> onCancel_;
    QMetaObject::Connection observer_;
    int firstRow_ = 0;
    int wheelAngle_ = 0;
    bool pointerPending_ = false;
};

}  // namespace orlo
