#include "kit/Permissions.h"
#include "platform/Accessibility.h"

namespace orlo {

Permissions::Permissions(Accessibility& system, QObject* parent)
    : QObject(parent), system_(system), accessibility_(system.isTrusted())
{
    poller_.setInterval(PollIntervalMs);
    connect(&poller_, &QTimer::timeout, this, &Permissions::refresh);
    poller_.start();
}

void Permissions::refresh()
{
    const bool trusted = system_.isTrusted();
    if (trusted == accessibility_) return;
    accessibility_ = trusted;
    emit accessibilityChanged(trusted);
}

void Permissions::requestAccessibility()
{
    if (!system_.requestTrust()) system_.openSettings();
}

}  // namespace orlo
