// Cursor, UI colours and UI scale factor.
#include "platform/ui_state.h"

#include <array>
#include <stdexcept>
#include <string>

namespace hostrt {

namespace {
// The standard cursors; a handle is the address of its entry.
struct StandardCursorEntry {
    int id;
};
constexpr std::array<StandardCursorEntry, 13> kCursorIds{{{32512}, {32513}, {32514}, {32515}, {32516}, {32642},
                                                          {32643}, {32644}, {32645}, {32646}, {32648}, {32649},
                                                          {32650}}};
constexpr int kArrow = 32512;
const Point3 kHelperColor(0.533f, 0.710f, 0.878f);
const Point3 kNeutralGrey(0.5f, 0.5f, 0.5f);
constexpr int kHelperColorId = 20;
}  // namespace

UiState::UiState() : cursor_(StandardCursor(kArrow)) {}

UiState& UiState::Instance() {
    static UiState state;
    return state;
}

HCURSOR UiState::StandardCursor(int id) {
    for (const auto& entry : kCursorIds)
        if (entry.id == id) return const_cast<StandardCursorEntry*>(&entry);
    return nullptr;
}

int UiState::StandardCursorId(HCURSOR cursor) {
    for (const auto& entry : kCursorIds)
        if (cursor == &entry) return entry.id;
    return 0;
}

HCURSOR UiState::SetCursor(HCURSOR cursor) {
    HCURSOR previous = cursor_;
    cursor_ = cursor;
    ++cursorChanges_;
    return previous;
}

Point3 UiState::Color(int which) const {
    if (auto it = colors_.find(which); it != colors_.end()) return it->second;
    return which == kHelperColorId ? kHelperColor : kNeutralGrey;
}

void UiState::SetColor(int which, const Point3& color) { colors_[which] = color; }

void UiState::SetScaleFactor(float scale) {
    if (!(scale > 0.0f)) throw std::invalid_argument("the UI scale factor must be above 0, not " + std::to_string(scale));
    scale_ = scale;
}

void UiState::Reset() { *this = UiState(); }

}  // namespace hostrt
