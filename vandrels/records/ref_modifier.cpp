#include "records/ref_modifier.h"

std::uint8_t ReadModifierToggles(Modifier* mod) {
    if (!mod) return 0;
    std::uint8_t bits = 0;
    if (mod->IsEnabled()) bits |= kModToggleOn;
    if (mod->IsEnabledInViews()) bits |= kModToggleInViews;
    if (mod->IsEnabledInRender()) bits |= kModToggleInRender;
    return bits;
}

RefModifier::RefModifier(Modifier* mod, std::uint8_t entryState, std::int32_t entryIndex)
    : state(entryState), index(entryIndex) {
    if (!mod) return;
    name = mod->GetName(false);
    toggles = ReadModifierToggles(mod);
}

RefModifier* RefModifier::Boundary() {
    auto* entry = new RefModifier;
    entry->state = kModBoundary;
    entry->toggles = 0;
    return entry;
}

RefModifier* RefModifier::Copy() const {
    auto* copy = new RefModifier;
    copy->state = state;
    copy->name = name;
    copy->index = index;
    copy->toggles = toggles;
    copy->SetContext(modContext.get());
    return copy;
}

void RefModifier::SetContext(const ModContext* context) {
    if (!context) {
        modContext.reset();
        return;
    }
    // The copy keeps transform and box only; the local data belongs to the modifier's own context.
    modContext = std::make_unique<ModContext>(context->tm, context->box);
}
