#include "system/KeyboardOverlay.h"
#include "kit/Symbols.h"
#include "system/KeyboardCleaner.h"
#include "system/SystemLog.h"
#include <QLabel>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace orlo {

static constexpr double BackdropOpacity = 0.93;

KeyboardOverlay::KeyboardOverlay(KeyboardCleaner& cleaner, const QRect& screen, bool translucent)
    : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::X11BypassWindowManagerHint),
      screen_(screen), translucent_(translucent)
{
    setAttribute(Qt::WA_TranslucentBackground, translucent);
    setObjectName(QStringLiteral("KeyboardOverlay"));
    setWindowTitle(tr("Keyboard locked for cleaning"));
    QPalette light = palette();
    light.setColor(QPalette::WindowText, Qt::white);
    setPalette(light);

    auto* icon = new QLabel(this);
    icon->setPixmap(symbolPixmap(QStringLiteral("keyboard"), 72, Qt::white));
    icon->setAlignment(Qt::AlignCenter);
    auto* title = new QLabel(tr("Keyboard locked for cleaning"), this);
    QFont big = title->font();
    big.setPointSizeF(big.pointSizeF() * 2.2);
    big.setBold(true);
    title->setFont(big);
    title->setAlignment(Qt::AlignCenter);
    auto* hint = new QLabel(tr("Hold Esc for 3 seconds or click Done"), this);
    hint->setAlignment(Qt::AlignCenter);
    progress_ = new QProgressBar(this);
    progress_->setRange(0, 1000);
    progress_->setTextVisible(false);
    progress_->setFixedSize(280, 8);
    secondsLeft_ = new QLabel(this);
    secondsLeft_->setAlignment(Qt::AlignCenter);
    auto* done = new QPushButton(tr("Done"), this);
    done->setObjectName(QStringLiteral("done"));
    done->setMinimumWidth(120);
    connect(done, &QPushButton::clicked, this, &KeyboardOverlay::doneClicked);
    done_ = done;

    auto* column = new QVBoxLayout(this);
    column->addStretch(1);
    column->setSpacing(14);
    column->addWidget(icon);
    column->addWidget(title);
    column->addWidget(hint);
    column->addWidget(progress_, 0, Qt::AlignHCenter);
    column->addWidget(secondsLeft_);
    column->addSpacing(8);
    column->addWidget(done, 0, Qt::AlignHCenter);
    column->addStretch(1);

    connect(&cleaner, &KeyboardCleaner::holdProgressChanged, this, &KeyboardOverlay::showProgress);
    connect(&cleaner, &KeyboardCleaner::secondsLeftChanged, this, &KeyboardOverlay::showSecondsLeft);
    showProgress(cleaner.holdProgress());
    showSecondsLeft(cleaner.secondsLeft());
}

void KeyboardOverlay::present()
{
    setGeometry(screen_);
    show();
    raise();
    if (lcSystem().isDebugEnabled())
        QTimer::singleShot(100, this, [this] {
            const QPoint at = done_->mapToGlobal(done_->rect().center());
            qCDebug(lcSystem, "keyboard overlay Done at %d,%d", at.x(), at.y());
        });
}

void KeyboardOverlay::takeFocus()
{
    activateWindow();
    setFocus();
}

void KeyboardOverlay::showProgress(double progress) { progress_->setValue(int(progress * 1000)); }

void KeyboardOverlay::showSecondsLeft(int seconds) { secondsLeft_->setText(tr("Unlocks automatically in %1 s").arg(seconds)); }

void KeyboardOverlay::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    if (translucent_) {
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.fillRect(rect(), QColor::fromRgbF(0, 0, 0, BackdropOpacity));
        return;
    }
    // Without a compositor nothing blends windows: the backdrop is drawn as the dark
    // translucent one would look over an average mid-grey screen.
    const double shade = (1.0 - BackdropOpacity) * 0.5;
    painter.fillRect(rect(), QColor::fromRgbF(shade, shade, shade));
}

}  // namespace orlo
