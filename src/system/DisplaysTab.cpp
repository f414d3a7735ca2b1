#include "system/DisplaysTab.h"
#include "system/DimmingSlider.h"
#include "system/DisplayDimmer.h"
#include "system/SystemModule.h"
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace orlo {

DisplaysTab::DisplaysTab(SystemModule& module, QWidget* parent)
    : QWidget(parent), module_(module), dimmer_(module.dimmer())
{
    setObjectName(QStringLiteral("displaysTab"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(12, 12, 12, 12);
    auto* heading = new QLabel(tr("Dim below the system minimum"), this);
    QFont bold = heading->font();
    bold.setBold(true);
    heading->setFont(bold);
    column->addWidget(heading);
    auto* note = new QLabel(tr("Lowers each display's output on top of its normal brightness. "
                               "Displays go back to normal when Orlo quits or this module is off."), this);
    note->setWordWrap(true);
    column->addWidget(note);
    hint_ = new QLabel(tr("Turn the module on to apply dimming."), this);
    hint_->setObjectName(QStringLiteral("dimmingHint"));
    hint_->setForegroundRole(QPalette::PlaceholderText);
    column->addWidget(hint_);

    auto* box = new QGroupBox(this);
    sliders_ = new QVBoxLayout(box);
    column->addWidget(box);

    auto* reset = new QPushButton(tr("Reset all displays"), this);
    reset->setObjectName(QStringLiteral("resetDisplays"));
    auto* resetRow = new QHBoxLayout;
    resetRow->addWidget(reset);
    resetRow->addStretch(1);
    column->addLayout(resetRow);
    column->addStretch(1);

    connect(reset, &QPushButton::clicked, &dimmer_, &DisplayDimmer::resetAll);
    connect(&dimmer_, &DisplayDimmer::displaysChanged, this, &DisplaysTab::rebuildSliders);
    connect(&module_, &SystemModule::runningChanged, this, &DisplaysTab::refreshHint);
    rebuildSliders();
    refreshHint();
}

void DisplaysTab::rebuildSliders()
{
    while (QLayoutItem* item = sliders_->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    if (dimmer_.displays().isEmpty()) {
        sliders_->addWidget(new QLabel(tr("No display offers dimming."), this));
        return;
    }
    for (const GammaDisplay& display : dimmer_.displays()) {
        auto* row = new QWidget(this);
        auto* line = new QVBoxLayout(row);
        line->setContentsMargins(0, 4, 0, 4);
        line->addWidget(new QLabel(display.name, row));
        line->addWidget(new DimmingSlider(dimmer_, display, row));
        sliders_->addWidget(row);
    }
}

void DisplaysTab::refreshHint() { hint_->setVisible(!module_.isRunning()); }

}  // namespace orlo
