// The scope in which one node record re-applies its modifier overrides during a load.
#pragma once

class RefNode;

// While a node record re-applies its modifier overrides during a load, the other node records hear the node
// messages that the re-application causes; the modifier monitoring holds this scope for that time.
class ModifierOverrideScope {
public:
    explicit ModifierOverrideScope(RefNode* applying);
    ~ModifierOverrideScope();
    ModifierOverrideScope(const ModifierOverrideScope&) = delete;
    ModifierOverrideScope& operator=(const ModifierOverrideScope&) = delete;
    // The record re-applying its modifier overrides, or null.
    static RefNode* Applying();

private:
    RefNode* previous_;
};
