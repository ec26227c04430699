#pragma once
// Commands: named actions an application can list, bind and run. Library
// modules register theirs at load time through a static CommandRegistrar; the
// map is built on first use, so the order of static initialisation between
// modules cannot matter.

#include "core/LightweightString.h"
#include "core/Memory.h"

#include <cstdint>
#include <functional>
#include <mutex>

namespace Cmd {

// The action of a command: a plain function.
class Function {
public:
    Function() = default;
    explicit Function(void (*function)()) : m_function(function) {}
    bool execute() const
    {
        if (!m_function)
            return false;
        m_function();
        return true;
    }

private:
    void (*m_function)() = nullptr;
};

} // namespace Cmd

// A presentation string: a resource identifier (999999 means no text) and two
// further fields.
struct UIString {
    std::uint32_t id = 999999;
    std::uint32_t first = 0;
    std::uint32_t second = 0;
};

// Where a command appears in the application's menus; the default is nowhere.
struct MapItem {
    String menu;
    int position = -1;
};

struct Command {
    String name;
    Cmd::Function function;
    UIString label;
    UIString description;
    int flags = 0;
    MapItem mapItem;
};

class CommandMap {
public:
    static CommandMap& instance();

    // A later registration of the same name replaces the earlier one.
    void add(const Command& command);
    bool contains(const String& name) const;
    // Runs the command; false when there is none of that name.
    bool execute(const String& name) const;
    Qv::Vector<String> names() const;

private:
    CommandMap() = default;
    mutable std::mutex m_mutex;
    Qv::Map<String, Command> m_commands;
};

class CommandRegistrar {
public:
    CommandRegistrar(const char* name, Cmd::Function function, UIString label = {}, UIString description = {},
                     int flags = 2, MapItem mapItem = {});
};
