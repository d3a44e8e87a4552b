// The node record's modifier mirrors: one RefModifier per entry of the node's world-space and object-space
// stacks, and the change lists (deleted, renamed, toggled referenced modifiers) that are made again on every
// reload. The node record owns all of them; the modifier of an entry is one of the node record's references.
#pragma once

#include "object.h"
#include "strclass.h"
#include "tab.h"

#include <cstdint>
#include <memory>

// What an entry of a stack mirror stands for.
enum RefModifierState : std::uint8_t {
    kModFromReference = 0,  // came with the reference file
    kModLocal = 1,          // added or put in place of a referenced one by the user; re-applied on reload
    kModBoundary = 3,       // boundary between two derived objects of the object-space chain
};

// The three toggles of a modifier as an entry stores them.
enum RefModifierToggle : std::uint8_t {
    kModToggleOn = 0x1,
    kModToggleInViews = 0x2,
    kModToggleInRender = 0x4,
};

// The toggles of mod as bits.
std::uint8_t ReadModifierToggles(Modifier* mod);

struct RefModifier {
    // The modifier in the node's stack (null in a boundary entry). While the object-space stack is replaced
    // locally, the first object-space entry holds the replaced stack's top item instead.
    ReferenceTarget* modifier = nullptr;
    std::uint8_t state = kModFromReference;
    MSTR name;
    std::int32_t index = -1;
    std::uint8_t toggles = kModToggleOn | kModToggleInViews | kModToggleInRender;
    // The modifier's context (transform and box), kept for local modifiers so they go back with the same gizmo.
    std::unique_ptr<ModContext> modContext;

    RefModifier() = default;
    // An entry for mod at index, taking its name and toggles.
    RefModifier(Modifier* mod, std::uint8_t state, std::int32_t index);
    static RefModifier* Boundary();
    // A copy of every field but the modifier, which the owner references itself; the context is copied too
    // (without the modifier's local data).
    RefModifier* Copy() const;
    Modifier* GetModifier() const { return dynamic_cast<Modifier*>(modifier); }
    // Keeps a copy of context's transform and box (null drops the stored context).
    void SetContext(const ModContext* context);
};

// A referenced modifier the user deleted.
struct ModDeleted {
    MSTR name;
    std::int32_t index = 0;
    std::int32_t position = 0;  // where the last matching found it
    std::int32_t matched = 0;   // work mark of a matching pass
    ModDeleted* Copy() const { return new ModDeleted(*this); }
};

// A referenced modifier the user renamed: name is the referenced name.
struct ModChangedName {
    MSTR name;
    std::int32_t index = 0;
    MSTR newName;
    std::int32_t matched = 0;
    ModChangedName* Copy() const { return new ModChangedName(*this); }
};

// A referenced modifier whose toggles the user switched.
struct ModChangedToggles {
    MSTR name;
    std::int32_t index = 0;
    std::uint8_t toggles = 0;
    std::int32_t matched = 0;
    ModChangedToggles* Copy() const { return new ModChangedToggles(*this); }
};

// A stored change index: negative values are the complement of an index whose modifier was missing at the last
// re-application.
inline std::int32_t EffectiveModIndex(std::int32_t stored) { return stored < 0 ? ~stored : stored; }

// Deletes every entry of list and empties it.
template <class T> void FreeModList(Tab<T*>& list) {
    for (T* entry : list) delete entry;
    list.ZeroCount();
}

// list's entries copied one by one (null entries stay null).
template <class T> Tab<T*> CopyModList(const Tab<T*>& list) {
    Tab<T*> out;
    for (T* entry : list) {
        T* copy = entry ? entry->Copy() : nullptr;
        out.Append(copy);
    }
    return out;
}
