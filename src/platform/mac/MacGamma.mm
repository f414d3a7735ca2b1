#include "platform/mac/MacGamma.h"
#include "platform/mac/MacRecoveryMarks.h"
#import <AppKit/AppKit.h>
#import <CoreGraphics/CoreGraphics.h>
#include <algorithm>

// No Core Foundation object is created here.
namespace orlo::mac {

namespace {
const QString DimmedMark = QStringLiteral("displaysDimmed");
}

struct MacGamma::Observers {
    id screens = nil;
    id wake = nil;
};

MacGamma::MacGamma(QObject* parent) : Gamma(parent), observers_(std::make_unique<Observers>())
{
    // A display left dimmed by an Orlo that was killed gets its colours back first.
    if (recovery::isMarked(DimmedMark)) {
        CGDisplayRestoreColorSyncSettings();
        recovery::mark(DimmedMark, false);
    }
    observers_->screens = [[NSNotificationCenter defaultCenter] addObserverForName:NSApplicationDidChangeScreenParametersNotification
                                                                            object:nil
                                                                             queue:[NSOperationQueue mainQueue]
                                                                        usingBlock:^(NSNotification*) {
                                                                          emit displaysChanged();
                                                                        }];
    observers_->wake = [[NSWorkspace sharedWorkspace].notificationCenter addObserverForName:NSWorkspaceScreensDidWakeNotification
                                                                                      object:nil
                                                                                       queue:[NSOperationQueue mainQueue]
                                                                                  usingBlock:^(NSNotification*) {
                                                                                    emit displaysChanged();
                                                                                  }];
}

MacGamma::~MacGamma()
{
    [[NSNotificationCenter defaultCenter] removeObserver:observers_->screens];
    [[NSWorkspace sharedWorkspace].notificationCenter removeObserver:observers_->wake];
}

QList<GammaDisplay> MacGamma::displays()
{
    QList<GammaDisplay> out;
    const CGDirectDisplayID mainDisplay = CGMainDisplayID();
    for (NSScreen* screen in [NSScreen screens]) {
        NSNumber* number = screen.deviceDescription[@"NSScreenNumber"];
        const auto id = CGDirectDisplayID(number.unsignedIntValue);
        const QString key = QStringLiteral("%1-%2-%3").arg(CGDisplayVendorNumber(id)).arg(CGDisplayModelNumber(id)).arg(CGDisplaySerialNumber(id));
        GammaDisplay display{id, QString::fromNSString(screen.localizedName), key, id == mainDisplay};
        if (display.isMain)
            out.prepend(display);
        else
            out << display;
    }
    return out;
}

int MacGamma::capacity(quint32 display) { return int(CGDisplayGammaTableCapacity(display)); }

std::optional<GammaTables> MacGamma::read(quint32 display)
{
    const uint32_t size = CGDisplayGammaTableCapacity(display);
    if (size == 0) return std::nullopt;
    GammaTables tables;
    tables.red.resize(size);
    tables.green.resize(size);
    tables.blue.resize(size);
    uint32_t count = 0;
    if (CGGetDisplayTransferByTable(display, size, tables.red.data(), tables.green.data(), tables.blue.data(), &count) != kCGErrorSuccess ||
        count == 0)
        return std::nullopt;
    const qsizetype kept = qsizetype(std::min(count, size));
    tables.red.resize(kept);
    tables.green.resize(kept);
    tables.blue.resize(kept);
    return tables;
}

bool MacGamma::set(const GammaDisplay& display, const GammaTables& tables, const GammaTables& original)
{
    const qsizetype size = tables.red.size();
    if (size == 0 || tables.green.size() != size || tables.blue.size() != size) return false;
    markChanged(display.key, tables != original);
    return CGSetDisplayTransferByTable(display.id, uint32_t(size), tables.red.constData(), tables.green.constData(),
                                       tables.blue.constData()) == kCGErrorSuccess;
}

void MacGamma::forget(const GammaDisplay& display) { markChanged(display.key, false); }

void MacGamma::markChanged(const QString& key, bool changed)
{
    if (changed) changed_.insert(key);
    else changed_.remove(key);
    recovery::mark(DimmedMark, !changed_.isEmpty());
}

}  // namespace orlo::mac
