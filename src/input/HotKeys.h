#pragma once
#include "input/Shortcut.h"
#include <QHash>
#include <QList>
#include <QObject>
#include <QSet>
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

    explicit HotKeys(HotKeyService& service, QObject* parent = nullptr);

    std::optional<Token> registerHotKey(const Shortcut& shortcut, std::function<void()> handler);
    void unregister(std::optional<Token> token);
    void unregister(const QList<Token>& tokens);
    // Runs the handler of a press; unknown ids run nothing. The press counts as handled either way.
    bool dispatch(quint32 id);

private:
    HotKeyService& service_;
    quint32 nextId_ = 1;
    QHash<quint32, std::function<void()>> handlers_;
    QSet<quint32> registered_;
};

inline size_t qHash(const HotKeys::Token& t, size_t seed = 0) { return ::qHash(t.id, seed); }

}  // namespace orlo
