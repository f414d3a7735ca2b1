#include "app/AccessibilityRow.h"
#include "kit/Permissions.h"
#include "kit/Symbols.h"
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace orlo {

AccessibilityRow::AccessibilityRow(Permissions& permissions, QWidget* parent) : QWidget(parent)
{
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    auto* icon = new QLabel(this);
    icon->setPixmap(symbolPixmap(QStringLiteral("exclamationmark.triangle.fill"), 16, QColor(0xE0, 0x9B, 0x00)));
    auto* text = new QLabel(tr("Allow Accessibility to move, switch and paste."), this);
    text->setWordWrap(true);
    auto* allow = new QPushButton(tr("Allow"), this);
    row->addWidget(icon, 0, Qt::AlignTop);
    row->addWidget(text, 1);
    row->addWidget(allow);
    connect(allow, &QPushButton::clicked, &permissions, &Permissions::requestAccessibility);
}

}  // namespace orlo
