#include "system/DimmingSlider.h"
#include "kit/Symbols.h"
#include "system/DisplayDimmer.h"
#include <QHBoxLayout>
#include <QLabel>
#include <QSlider>
#include <cmath>

namespace orlo {

DimmingSlider::DimmingSlider(DisplayDimmer& dimmer, const GammaDisplay& display, QWidget* parent)
    : QWidget(parent), dimmer_(dimmer), display_(display)
{
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    auto* moon = new QLabel(this);
    moon->setPixmap(symbolPixmap(QStringLiteral("moon"), 16));
    auto* sun = new QLabel(this);
    sun->setPixmap(symbolPixmap(QStringLiteral("sun.max"), 16));
    slider_ = new QSlider(Qt::Horizontal, this);
    slider_->setObjectName(QStringLiteral("dimLevel"));
    slider_->setAccessibleName(display.name);
    slider_->setRange(int(std::lround(DisplayDimmer::MinimumLevel * 100)), int(std::lround(DisplayDimmer::MaximumLevel * 100)));
    slider_->setSingleStep(1);
    slider_->setPageStep(5);
    row->addWidget(moon);
    row->addWidget(slider_, 1);
    row->addWidget(sun);
    showLevel();
    connect(slider_, &QSlider::valueChanged, this, [this](int value) { dimmer_.setLevel(value / 100.0, display_); });
    connect(&dimmer_, &DisplayDimmer::levelsChanged, this, &DimmingSlider::showLevel);
}

void DimmingSlider::showLevel()
{
    const QSignalBlocker quiet(slider_);
    slider_->setValue(int(std::lround(dimmer_.level(display_) * 100)));
}

}  // namespace orlo
