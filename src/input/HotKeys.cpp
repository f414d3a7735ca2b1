#include "input/HotKeys.h"
#include "platform/HotKeyService.h"

namespace orlo {

HotKeys::HotKeys(HotKeyService& service, QObject* parent) : QObject(parent), service_(service)
{
    connect(&service_, &HotKeyService::pressed, this, &HotKeys::dispatch);
    connect(&service_, &HotKeyService::pressedWhileHeld, this, [this](quint32 id, const KeyEvent& key) {
        if (auto handler = whileHeld_.value(id)) handler(key);
    });
}

std::optional<HotKeys::Token> HotKeys::registerHotKey(const Shortcut& shortcut, std::function<void()> handler, TypedWhileHeld whileHeld)
{
    Q_ASSERT_X(nextId_ != 0xFFFFFFFFu, "HotKeys", "hot-key ids exhausted");
    const quint32 id = nextId_++;
    if (!service_.registerHotKey(id, shortcut.keyCode, shortcut.carbonModifiers())) return std::nullopt;
    handlers_.insert(id, std::move(handler));
    if (whileHeld) whileHeld_.insert(id, std::move(whileHeld));
    registered_.insert(id, shortcut);
    return Token{id};
}

void HotKeys::unregister(std::optional<Token> token)
{
    if (!token || !registered_.remove(token->id)) return;
    service_.unregisterHotKey(token->id);
    handlers_.remove(token->id);
    whileHeld_.remove(token->id);
}

void HotKeys::unregister(const QList<Token>& tokens)
{
    for (const Token& t : tokens) unregister(std::optional<Token>(t));
}

bool HotKeys::isHeldByAnotherApp(const Shortcut& shortcut) const
{
    return service_.isHeldByAnotherApp(shortcut.keyCode, shortcut.carbonModifiers());
}

QString HotKeys::bindingsFile() const { return service_.bindingsFile(); }

QString HotKeys::bindingLine(const Shortcut& shortcut, const QString& command) const
{
    return service_.bindingLine(shortcut.keyCode, shortcut.carbonModifiers(), command);
}

bool HotKeys::isFree(const Shortcut& shortcut)
{
    for (const Shortcut& held : std::as_const(registered_))
        if (held.combo() == shortcut.combo()) return true;
    const quint32 id = nextId_++;
    if (!service_.registerHotKey(id, shortcut.keyCode, shortcut.carbonModifiers())) return false;
    service_.unregisterHotKey(id);
    return true;
}

void HotKeys::reportTaken(const QString& page, const QList<Taken>& taken)
{
    // A page keeps its place in the list, so that the first page reported stays first.
    QList<Taken> list;
    bool placed = false;
    for (const Taken& t : std::as_const(taken_)) {
        if (t.page != page) {
            list << t;
        } else if (!placed) {
            list << taken;
            placed = true;
        }
    }
    if (!placed) list << taken;
    if (list == taken_) return;
    taken_ = list;
    emit takenChanged();
}

QList<HotKeys::Taken> HotKeys::taken() const { return taken_; }

void HotKeys::reportAdvice(const QString& page, const QString& text)
{
    QList<Advice> list;
    for (const Advice& a : std::as_const(advice_))
        if (a.page != page) list << a;
    if (!text.isEmpty()) list << Advice{page, text};
    if (list == advice_) return;
    advice_ = list;
    emit takenChanged();
}

bool HotKeys::dispatch(quint32 id)
{
    // Copy: a handler may unregister itself.
    if (auto handler = handlers_.value(id)) handler();
    return true;
}

}  // namespace orlo
