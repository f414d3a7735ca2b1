#include "platform/wayland/kwin/KWinScreens.h"
#include "platform/Geometry.h"
#include "platform/wayland/kwin/KWinDesktop.h"

namespace orlo::kwin {

namespace {
bool same(const QList<ScreenInfo>& a, const QList<ScreenInfo>& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const ScreenInfo& x, const ScreenInfo& y) {
        return x.frame == y.frame && x.visibleFrame == y.visibleFrame && x.name == y.name;
    });
}
}  // namespace

KWinScreens::KWinScreens(KWinDesktop& desktop, QObject* parent) : Screens(parent), desktop_(desktop)
{
    last_ = screens();
    connect(&desktop_, &KWinDesktop::changed, this, [this] {
        QList<ScreenInfo> now = screens();
        if (same(now, last_)) return;
        last_ = std::move(now);
        emit changed();
    });
}

QList<ScreenInfo> KWinScreens::screens()
{
    const QList<KWinScreen> reported = desktop_.screens();
    if (reported.isEmpty()) return {};
    const double primaryHeight = reported.first().frame.height();
    QList<ScreenInfo> list;
    quint32 number = 1;
    for (const KWinScreen& s : reported)
        list << ScreenInfo{flipped(s.frame, primaryHeight), flipped(s.workArea, primaryHeight), number++, false, s.name};
    return list;
}

}  // namespace orlo::kwin
