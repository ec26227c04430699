#include "tela/core/Commands.h"

#include "tela/core/Log.h"
#include "tela/core/NeverDestroyed.h"

CommandMap& CommandMap::instance()
{
    // Built on first use, from whichever module's registrar comes first, and
    // never destroyed: registrars in other modules may run after this one's
    // statics would have been torn down.
    static Qv::NeverDestroyed<CommandMap> map;
    return *map;
}

void CommandMap::registerCommand(const CommandMapRec& record)
{
    if (record.name.empty()) {
        murl_printf("CommandMap::registerCommand: a command needs a name\n");
        return;
    }
    std::lock_guard lock(m_mutex);
    m_commands.insert_or_assign(record.name, record);
}

bool CommandMap::unregisterCommand(const String& name)
{
    std::lock_guard lock(m_mutex);
    return m_commands.erase(name) != 0;
}

bool CommandMap::contains(const String& name) const
{
    std::lock_guard lock(m_mutex);
    return m_commands.find(name) != m_commands.end();
}

bool CommandMap::find(const String& name, CommandMapRec& out) const
{
    std::lock_guard lock(m_mutex);
    const auto found = m_commands.find(name);
    if (found == m_commands.end())
        return false;
    out = found->second;
    return true;
}

String CommandMap::commandBoundToKey(std::uint32_t key, std::uint32_t held_key) const
{
    if (key == 0)
        return String(); // 0 is "unbound", never a key someone pressed
    std::lock_guard lock(m_mutex);
    for (const auto& [name, record] : m_commands)
        if (record.mapItem.key == key && record.mapItem.heldKey == held_key)
            return name;
    return String();
}

bool CommandMap::execute(const String& name) const
{
    Cmd::Function function;
    {
        std::lock_guard lock(m_mutex);
        const auto found = m_commands.find(name);
        if (found == m_commands.end())
            return false;
        function = found->second.function;
    }
    // Run outside the lock: a command may look at, or change, the map itself.
    return function.execute();
}

Qv::Vector<String> CommandMap::names() const
{
    std::lock_guard lock(m_mutex);
    Qv::Vector<String> result;
    result.reserve(m_commands.size());
    for (const auto& entry : m_commands)
        result.push_back(entry.first);
    return result;
}

CommandRegistrar::CommandRegistrar(const char* name, Cmd::Function function, const UIString& label,
                                   const UIString& description, int flags, const MapItem& map_item)
    : CommandRegistrar(CommandMapRec{String(name), function, Cmd::Presentation(label, description), flags, map_item})
{
}

CommandRegistrar::CommandRegistrar(const CommandMapRec& record)
{
    CommandMap::instance().registerCommand(record);
}
