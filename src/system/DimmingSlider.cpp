#include "system/DimmingSlider.h"
#include "kit/Symbols.h"
#include "system/DisplayDimmer.h"
#include <QHBoxLayout>
#include <QLabel>
#include <QSlider>
#include <cmath>
#include <utility>

namespace orlo {

static constexpr int FrameMs = 16;

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
    frame_.setSingleShot(true);
    frame_.setInterval(FrameMs);
    connect(&frame_, &QTimer::timeout, this, &DimmingSlider::setPendingLevel);
    connect(slider_, &QSlider::valueChanged, this, &DimmingSlider::onMoved);
    connect(&dimmer_, &DisplayDimmer::levelsChanged, this, &DimmingSlider::showLevel);
}

void DimmingSlider::onMoved(int value)
{
    pending_ = value;
    if (!frame_.isActive()) setPendingLevel();
}

void DimmingSlider::setPendingLevel()
{
    if (!pending_) return;
    const int value = *std::exchange(pending_, std::nullopt);
    frame_.start();
    dimmer_.setLevel(value / 100.0, display_);
}

void DimmingSlider::showLevel()
{
    if (pending_) return;  // the user's latest move is about to be set
    const QSignalBlocker quiet(slider_);
    slider_->setValue(int(std::lround(dimmer_.level(display_) * 100)));
}

}  // namespace orlo
