#include "clipboard/ClipRow.h"
#include "kit/Symbols.h"
#include "clipboard/ClipAssets.h"
#include "clipboard/PickerModel.h"
#include <QApplication>
#include <QPainter>
#include <QPainterPath>

namespace orlo {

ClipRow::ClipRow(PickerModel& model, Workspace& workspace, QString imagesFolder, QObject* parent)
    : QStyledItemDelegate(parent), model_(model), workspace_(workspace), imagesFolder_(std::move(imagesFolder))
{
}

QSize ClipRow::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const { return {400, Height}; }

bool ClipRow::showBadge(int row) const { return row < 9 && model_.query().isEmpty(); }

void ClipRow::paintLeading(QPainter* painter, const QRect& box, int row, const QColor& ink) const
{
    const ClipItem& item = model_.item(row);
    if (item.kind == ClipItem::Kind::Image) {
        if (const auto thumb = ClipAssets::thumbnail(item, imagesFolder_)) {
            const QSize size = thumb->size().scaled(box.size(), Qt::KeepAspectRatio);
            QRect target(QPoint(), size);
            target.moveCenter(box.center());
            QPainterPath clip;
            clip.addRoundedRect(target, 4, 4);
            painter->save();
            painter->setClipPath(clip);
            painter->drawImage(target, *thumb);
            painter->restore();
            return;
        }
    }
    if (item.kind == ClipItem::Kind::Color && item.color()) {
        if (const auto colour = ClipItem::colorFromHex(*item.color())) {
            painter->setPen(QPen(ink, 0.5));
            painter->setBrush(*colour);
            painter->drawRoundedRect(QRectF(box).adjusted(4.5, 4.5, -4.5, -4.5), 5, 5);
            return;
        }
    }
    const int side = 18;
    painter->drawPixmap(QRect(box.center().x() - side / 2 + 1, box.center().y() - side / 2 + 1, side, side),
                        symbolPixmap(item.symbol(), side * 2, ink));
}

void ClipRow::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    const int row = index.row();
    if (row < 0 || row >= model_.count()) return;
    const ClipItem& item = model_.item(row);
    const QPalette& palette = option.palette;
    const bool selected = option.state & QStyle::State_Selected;
    const QColor ink = palette.color(selected ? QPalette::HighlightedText : QPalette::Text);
    QColor dim = ink;
    dim.setAlphaF(0.55f);

    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const QRect r = option.rect.adjusted(6, 2, -6, -2);
    if (selected) {
        painter->setPen(Qt::NoPen);
        painter->setBrush(palette.color(QPalette::Highlight));
        painter->drawRoundedRect(r, 6, 6);
    }

    int left = r.left() + 6;
    paintLeading(painter, QRect(left, r.center().y() - 16, 32, 32), row, ink);
    left += 32 + 10;

    int right = r.right() - 8;
    QFont small = option.font;
    small.setPointSizeF(small.pointSizeF() * 0.85);
    const QFontMetrics smallMetrics(small);
    if (showBadge(row)) {
        const QString digit = QString::number(row + 1);
        const QRect badge(right - 18, r.center().y() - 9, 18, 18);
        painter->setPen(QPen(dim, 1));
        painter->setBrush(Qt::NoBrush);
        painter->drawRoundedRect(QRectF(badge).adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
        painter->setFont(small);
        painter->setPen(dim);
        painter->drawText(badge, Qt::AlignCenter, digit);
        right = badge.left() - 8;
    }
    if (const auto icon = ClipAssets::appIcon(item.appBundleID, workspace_)) {
        icon->paint(painter, QRect(right - 16, r.center().y() - 8, 16, 16));
        right -= 16 + 6;
    }
    const QString age = ClipAssets::relative(item.date);
    const int ageWidth = smallMetrics.horizontalAdvance(age);
    painter->setFont(small);
    painter->setPen(dim);
    painter->drawText(QRect(right - ageWidth, r.top(), ageWidth, r.height()), Qt::AlignVCenter | Qt::AlignRight, age);
    right -= ageWidth + 8;
    if (item.pinned) {
        painter->drawPixmap(QRect(right - 12, r.center().y() - 6, 12, 12), symbolPixmap(QStringLiteral("pin"), 24, dim));
        right -= 12 + 6;
    }

    painter->setFont(option.font);
    painter->setPen(ink);
    const QRect titleRect(left, r.top(), std::max(right - left, 0), r.height());
    const QString title = option.fontMetrics.elidedText(item.title(), Qt::ElideRight, titleRect.width());
    painter->drawText(titleRect, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine, title);
    painter->restore();
}

}  // namespace orlo
