#include "core/Commands.h"

#include <new>

CommandMap& CommandMap::instance()
{
    // Never destroyed: registrars in other modules may outlive this one.
    alignas(CommandMap) static unsigned char storage[sizeof(CommandMap)];
    static CommandMap* map = ::new (storage) CommandMap();
    return *map;
}

void CommandMap::add(const Command& command)
{
    std::lock_guard lock(m_mutex);
    m_commands[command.name] = command;
}

bool CommandMap::contains(const String& name) const
{
    std::lock_guard lock(m_mutex);
    return m_commands.find(name) != m_commands.end();
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
    // Run outside the lock: a command may look at the map itself.
    return function.execute();
}

Qv::Vector<String> CommandMap::names() const
{
    std::lock_guard lock(m_mutex);
    Qv::Vector<String> result;
    for (const auto& entry : m_commands)
        result.push_back(entry.first);
    return result;
}

CommandRegistrar::CommandRegistrar(const char* name, Cmd::Function function, UIString label, UIString description,
                                   int flags, MapItem mapItem)
{
    CommandMap::instance().add(Command{String(name), function, label, description, flags, mapItem});
}
