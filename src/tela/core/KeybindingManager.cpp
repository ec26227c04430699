#include "tela/core/KeybindingManager.h"
#include "tela/core/NeverDestroyed.h"

KeybindingManager& KeybindingManager::instance()
{
    // Never destroyed, like the command map it reads: its memory comes from
    // the platform's heap, which may be gone when statics are torn down.
    static Qv::NeverDestroyed<KeybindingManager> manager;
    return *manager;
}

void KeybindingManager::bind(const MapItem& keys, const String& command)
{
    m_user.insert_or_assign(std::make_pair(keys.key, keys.heldKey), command);
}

void KeybindingManager::unbind(const MapItem& keys)
{
    m_user.erase(std::make_pair(keys.key, keys.heldKey));
}

void KeybindingManager::clearUserBindings()
{
    m_user.clear();
}

String KeybindingManager::findCommandBoundToKey(const ComplexKeyboardEvent& key) const
{
    const auto user = m_user.find(std::make_pair(key.key, key.heldKey));
    if (user != m_user.end())
        return user->second;
    return CommandMap::instance().commandBoundToKey(key.key, key.heldKey);
}

bool KeybindingManager::tryKey(const ComplexKeyboardEvent& key, bool press) const
{
    if (!press || key.key == 0)
        return false;
    const String command = findCommandBoundToKey(key);
    return !command.empty() && CommandMap::instance().execute(command);
}
