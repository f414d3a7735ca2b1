#pragma once
#include "input/Shortcut.h"
#include <QHash>
#include <QList>
#include <QObject>
#include <functional>
#include <optional>

namespace orlo {

class HotKeyService;

// The process-wide registry of global hot keys. Ids grow from 1 and are never reused; a
// refused registration still consumes its id.
class HotKeys : public QObject {
    Q_OBJECT
public:
    struct Token {
        quint32 id = 0;
        bool operator==(const Token&) const = default;
    };

    // A shortcut of Orlo's that another application holds: it does nothing until changed.
    struct Taken {
        QString page;    // the settings page where it is chosen (a module id)
        QString action;  // what it would do, as the page names it
        Shortcut shortcut;
        // The command line that does the same, for binding it in the window manager's own
        // keyboard settings ("orlo snap left-half"); empty when there is none.
        QString command = {};
        bool operator==(const Taken&) const = default;
    };

    // A setting of the desktop that works against one of Orlo's features, in words that tell
    // the user what to change.
    struct Advice {
        QString page;
        QString text;
        bool operator==(const Advice&) const = default;
    };

    explicit HotKeys(HotKeyService& service, QObject* parent = nullptr);

    // A key typed while the shortcut's own keys are still held: its key code and modifier flags.
    using TypedWhileHeld = std::function<void(const KeyEvent& key)>;

    // Keys typed while the shortcut is held reach no window; whileHeld, if given, receives them.
    std::optional<Token> registerHotKey(const Shortcut& shortcut, std::function<void()> handler, TypedWhileHeld whileHeld = {});
    void unregister(std::optional<Token> token);
    void unregister(const QList<Token>& tokens);
    // Whether another application holds a shortcut that Orlo has not registered, for callers
    // that take their keys another way (the switcher's trigger) or want to ask first.
    bool isHeldByAnotherApp(const Shortcut& shortcut) const;
    // Whether a hot key for this shortcut would work: Orlo holds it already, or the system
    // grants it now. A granted trial is let go at once.
    bool isFree(const Shortcut& shortcut);
    // Where the compositor lets only its own configuration bind keys: that file, and the line
    // that binds a shortcut to a command there. Empty elsewhere.
    QString bindingsFile() const;
    QString bindingLine(const Shortcut& shortcut, const QString& command) const;

    // Every module reports its taken shortcuts here, so that Orlo can tell the user about
    // them in one place. A report replaces the page's earlier one.
    void reportTaken(const QString& page, const QList<Taken>& taken);
    QList<Taken> taken() const;
    // Told together with the taken shortcuts; an empty text withdraws the page's advice.
    void reportAdvice(const QString& page, const QString& text);
    QList<Advice> advice() const { return advice_; }

    // Runs the handler of a press; unknown ids run nothing. The press counts as handled either way.
    bool dispatch(quint32 id);

signals:
    void takenChanged();

private:
    HotKeyService& service_;
    quint32 nextId_ = 1;
    QHash<quint32, std::function<void()>> handlers_;
    QHash<quint32, TypedWhileHeld> whileHeld_;
    QHash<quint32, Shortcut> registered_;
    QList<Taken> taken_;
    QList<Advice> advice_;
};

inline size_t qHash(const HotKeys::Token& t, size_t seed = 0) { return ::qHash(t.id, seed); }

}  // namespace orlo
