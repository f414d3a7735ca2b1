#pragma once
#include <QObject>
#include <QTimer>

namespace orlo {

class Accessibility;

// Whether Orlo holds the Accessibility permission, kept current by a 2-second poll.
class Permissions : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool accessibility READ accessibility NOTIFY accessibilityChanged)
public:
    static constexpr int PollIntervalMs = 2000;
    explicit Permissions(Accessibility& system, QObject* parent = nullptr);

    bool accessibility() const { return accessibility_; }
    // Prompts for the permission; a grant arrives later through the poll.
    void requestAccessibility();
    // One poll: reads the trust state and notifies only when it changed.
    void refresh();

signals:
    void accessibilityChanged(bool granted);

private:
    Accessibility& system_;
    bool accessibility_;
    QTimer poller_;
};

}  // namespace orlo
