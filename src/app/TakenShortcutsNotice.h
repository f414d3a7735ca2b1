#pragma once
#include "input/HotKeys.h"
#include <QObject>
#include <QTimer>

namespace orlo {

class KeyboardLayout;
class Notifications;

// Tells the user once, soon after Orlo starts, which of its shortcuts another application
// holds and which desktop settings work against Orlo: as a desktop notification that opens
// the right settings page when clicked, or, without a notification service, through the panel.
// Once the user has dealt with a shortcut it named, the notice is taken away.
class TakenShortcutsNotice : public QObject {
    Q_OBJECT
public:
    static constexpr int SettleMs = 1000;

    TakenShortcutsNotice(HotKeys& hotKeys, Notifications& notifications, KeyboardLayout& layout,
                         QObject* parent = nullptr);

    static QString title() { return tr("Shortcuts in use by another app"); }
    static QString adviceTitle() { return tr("A desktop setting works against Orlo"); }
    // "⌃⌥← Left Half and ⌃⌥→ Right Half do nothing: ..." with at most four shortcuts named.
    static QString body(const QList<HotKeys::Taken>& taken, KeyboardLayout& layout);
    // The settings page that a click opens.
    QString page() const { return page_; }

signals:
    void openRequested(const QString& page);
    // No notification could be shown: the text is for the panel. An empty text takes the
    // panel's notice away.
    void notShown(const QString& text);

private:
    void tell();
    void withdrawIfDealtWith();
    // The taken shortcuts, then each advice, one paragraph each.
    QString text() const;

    HotKeys& hotKeys_;
    Notifications& notifications_;
    KeyboardLayout& layout_;
    QTimer settle_;
    QString page_;
    QList<HotKeys::Taken> named_;
    bool told_ = false;
    bool withdrawn_ = false;
};

}  // namespace orlo
