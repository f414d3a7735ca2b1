#pragma once
#include <QLabel>

namespace orlo {

// The settings page of a module whose options are not configurable yet.
inline QWidget* placeholderPage()
{
    auto* label = new QLabel(QObject::tr("This module has no options yet."));
    label->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    label->setMargin(12);
    label->setEnabled(false);
    return label;
}

}  // namespace orlo
