#include "input/HotKeys.h"
#include "platform/HotKeyService.h"

namespace orlo {

HotKeys::HotKeys(HotKeyService& service, QObject* parent) : QObject(parent), service_(service)
{
    connect(&service_, &HotKeyService::pressed, this, &HotKeys::dispatch);
}

std::optional<HotKeys::Token> HotKeys::registerHotKey(const Shortcut& shortcut, std::function<void()> handler)
{
    Q_ASSERT_X(nextId_ != 0xFFFFFFFFu, "HotKeys", "hot-key ids exhausted");
    const quint32 id = nextId_++;
    if (!service_.registerHotKey(id, shortcut.keyCode, shortcut.carbonModifiers())) return std::nullopt;
    handlers_.insert(id, std::move(handler));
    registered_.insert(id);
    return Token{id};
}

void HotKeys::unregister(std::optional<Token> token)
{
    if (!token || !registered_.remove(token->id)) return;
    service_.unregisterHotKey(token->id);
    handlers_.remove(token->id);
}

void HotKeys::unregister(const QList<Token>& tokens)
{
    for (const Token& t : tokens) unregister(std::optional<Token>(t));
}

bool HotKeys::dispatch(quint32 id)
{
    // Copy: a handler may unregister itself.
    if (auto handler = handlers_.value(id)) handler();
    return true;
}

}  // namespace orlo
