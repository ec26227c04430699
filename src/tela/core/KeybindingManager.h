#pragma once
// KeybindingManager: which command a key runs. A command's own default key
// (its MapItem in the CommandMap) holds until the user binds that key to
// something else, or to nothing.
//
// Keys are complex: a key code with its modifier bits, and the key that was
// held down before it (0 for none). Main thread only, like the key events.

#include "tela/core/Commands.h"
#include "tela/core/LightweightString.h"
#include "tela/core/Memory.h"
#include "tela/core/NeverDestroyed.h"

#include <cstdint>
#include <utility>

// A key as the event queue delivers it: the key held first, the key pressed
// or released, and whether this is a flagged auto-repeat.
struct ComplexKeyboardEvent {
    std::uint32_t heldKey = 0;
    std::uint32_t key = 0;
    std::uint32_t keyRepeat = 0;
};

class KeybindingManager {
public:
    static KeybindingManager& instance();

    // The user's binding of a key, in place of any default; an empty name
    // leaves the key bound to nothing.
    void bind(const MapItem& keys, const String& command);
    // Back to the default for the key.
    void unbind(const MapItem& keys);
    void clearUserBindings();

    // The command the key runs; a null string when none.
    String findCommandBoundToKey(const ComplexKeyboardEvent& key) const;
    // Runs the command bound to a pressed key (repeats included). False on a
    // release, for an unbound key, and for a command with no function.
    bool tryKey(const ComplexKeyboardEvent& key, bool press) const;

private:
    friend class Qv::NeverDestroyed<KeybindingManager>; // the one instance is built by instance()
    KeybindingManager() = default;

    Qv::Map<std::pair<std::uint32_t, std::uint32_t>, String> m_user; // (key, held) -> command
};
