#pragma once
#include <QStyledItemDelegate>
#include <functional>

namespace orlo {

class PickerModel;
class Workspace;

// Draws one history row of the picker: the leading mark (an image's thumbnail, a colour's
// swatch or the kind's symbol), the title, the pin, the age, the source application's icon,
// and the digit that chooses the row while the search is empty.
class ClipRow : public QStyledItemDelegate {
    Q_OBJECT
public:
    static constexpr int Height = 44;

    ClipRow(PickerModel& model, Workspace& workspace, QString imagesFolder, QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    // The first nine rows show their digit while nothing is searched for.
    bool showBadge(int row) const;

private:
    void paintLeading(QPainter* painter, const QRect& box, int row, const QColor& ink) const;

    PickerModel& model_;
    Workspace& workspace_;
    QString imagesFolder_;
};

}  // namespace orlo
