// The remembered state of the library's dialogs: the manager window's size and place and the advanced reset
// dialog's choices, kept in the host INI file and read afresh each time a dialog is shown.
#pragma once

namespace vandrels {

// Size and position of the manager window, in pixels.
struct ManagerGeometry {
    int sizeX = 0;
    int sizeY = 0;
    int posX = 0;
    int posY = 0;
};

// The stored geometry; a missing value takes 720, 400, 200 and 200 times the host's UI scale (truncated), and a
// size that is 0 or negative takes its default too. Positions may be negative.
ManagerGeometry ReadManagerGeometry();
void WriteManagerGeometry(const ManagerGeometry& geometry);

constexpr int kResetCategoryCount = 8;   // Geometry ... Bone Objects
constexpr int kResetParameterCount = 9;  // Base Object ... Deleted Nodes

// What the advanced reset dialog showed last: references (1) or nodes (2), and its check boxes (all checked
// when missing).
struct AdvancedResetChoices {
    int selection = 1;
    bool categories[kResetCategoryCount] = {true, true, true, true, true, true, true, true};
    bool parameters[kResetParameterCount] = {true, true, true, true, true, true, true, true, true};
};

// The stored choices; every selection but 2 reads as 1.
AdvancedResetChoices ReadAdvancedResetChoices();
void WriteAdvancedResetChoices(const AdvancedResetChoices& choices);

}  // namespace vandrels
