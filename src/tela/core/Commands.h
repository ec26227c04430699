#pragma once
// Commands: named actions an application can list, bind to keys and run.
// Library modules register theirs at load time through a static
// CommandRegistrar; the map is built on first use, so the order of static
// initialisation between modules cannot matter.
//
// - Names are the identity: registering a name again replaces the record.
// - Commands run outside the map's lock, so a command may use the map.

#include "tela/core/LightweightString.h"
#include "tela/core/Memory.h"
#include "tela/core/NeverDestroyed.h"
#include "tela/core/UIString.h"

#include <cstdint>
#include <mutex>

namespace Cmd {

// The action of a command: a plain function. A default one does nothing.
class Function {
public:
    Function() = default;
    explicit Function(void (*function)()) : m_function(function) {}

    // False when there is nothing to call.
    bool execute() const
    {
        if (!m_function)
            return false;
        m_function();
        return true;
    }
    bool isEmpty() const { return !m_function; }
    bool operator==(const Function& other) const = default;

private:
    void (*m_function)() = nullptr;
};

// How a command is shown: its label, a longer description and the group it is
// listed under. Each may be UIString::NO_RESOURCE, meaning no text.
struct Presentation {
    Presentation() = default;
    Presentation(const UIString& command_label, const UIString& command_description,
                 const UIString& command_group = UIString())
        : label(command_label), description(command_description), group(command_group) {}

    UIString label;
    UIString description;
    UIString group;
};

} // namespace Cmd

// The key a command is bound to until the user binds it otherwise. A key of 0
// means no default binding; heldKey 0 means no key need be held with it.
struct MapItem {
    MapItem() = default;
    explicit MapItem(std::uint32_t default_key, std::uint32_t held_key = 0) : key(default_key), heldKey(held_key) {}

    bool isBound() const { return key != 0; }
    bool operator==(const MapItem& other) const = default;

    std::uint32_t key = 0;
    std::uint32_t heldKey = 0;
};

// One entry of the command map.
struct CommandMapRec {
    String name;
    Cmd::Function function;
    Cmd::Presentation presentation;
    int flags = 0;
    MapItem mapItem;
};

// Process-wide: instance() is safe from static constructors of any module and
// the map is never destroyed, so registrars and late users never see it gone.
class CommandMap {
public:
    static CommandMap& instance();

    // Registering a name again replaces the earlier record. A record without a
    // name is refused (and reported).
    void registerCommand(const CommandMapRec& record);
    // Forgets the command; false when there was none of that name.
    bool unregisterCommand(const String& name);

    bool contains(const String& name) const;
    // Copies the record into `out`; false (and `out` untouched) when unknown.
    bool find(const String& name, CommandMapRec& out) const;
    // The name of the command whose default binding is (key, heldKey); a null
    // string when none is.
    String commandBoundToKey(std::uint32_t key, std::uint32_t held_key) const;
    // Runs the command; false when there is none of that name, or it has no function.
    bool execute(const String& name) const;
    // Every name, in byte order.
    Qv::Vector<String> names() const;

private:
    friend class Qv::NeverDestroyed<CommandMap>; // the one instance is built by instance()
    CommandMap() = default;

    mutable std::mutex m_mutex;
    Qv::Map<String, CommandMapRec> m_commands;
};

// Registers one command when constructed; meant for statics at namespace scope,
// which are built as the library loads.
class CommandRegistrar {
public:
    CommandRegistrar(const char* name, Cmd::Function function, const UIString& label = UIString(),
                     const UIString& description = UIString(), int flags = 2, const MapItem& map_item = MapItem());
    explicit CommandRegistrar(const CommandMapRec& record);
    CommandRegistrar(const CommandRegistrar&) = delete;
    CommandRegistrar& operator=(const CommandRegistrar&) = delete;
};
