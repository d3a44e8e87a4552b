#include "dialog_settings.h"

#include "frame/settings.h"

#include "maxapi.h"

namespace vandrels {

namespace {

const MCHAR* const kCategoryKeys[kResetCategoryCount] = {
    L"AdvReset_UIGeometry", L"AdvReset_UIShapes",         L"AdvReset_UILights",         L"AdvReset_UICameras",
    L"AdvReset_UIHelpers",  L"AdvReset_UISpaceWarps",     L"AdvReset_UIParticleSystems", L"AdvReset_UIBoneObjects"};
const MCHAR* const kParameterKeys[kResetParameterCount] = {
    L"AdvReset_UIBaseObject", L"AdvReset_UIModifiers", L"AdvReset_UITransform",
    L"AdvReset_UIMaterial",   L"AdvReset_UIObjectProperties", L"AdvReset_UIParenting",
    L"AdvReset_UIName",       L"AdvReset_UILayer",     L"AdvReset_UIDeletedNodes"};

int Scaled(int pixels) { return int(float(pixels) * MaxSDK::GetUIScaleFactor()); }

// A size falls back to its default when missing or not positive.
int ReadSize(const MCHAR* key, int defaultPixels) {
    int value = Scaled(defaultPixels);
    if (ReadIntSetting(key, value) && value <= 0) value = Scaled(defaultPixels);
    return value;
}

bool ReadCheck(const MCHAR* key) {
    int value = 1;
    ReadIntSetting(key, value);
    return value != 0;
}

}  // namespace

ManagerGeometry ReadManagerGeometry() {
    ManagerGeometry g;
    g.sizeX = ReadSize(L"DlgSizeX", 720);
    g.sizeY = ReadSize(L"DlgSizeY", 400);
    g.posX = Scaled(200);
    ReadIntSetting(L"DlgPosX", g.posX);
    g.posY = Scaled(200);
    ReadIntSetting(L"DlgPosY", g.posY);
    return g;
}

void WriteManagerGeometry(const ManagerGeometry& geometry) {
    WriteIntSetting(L"DlgSizeX", geometry.sizeX);
    WriteIntSetting(L"DlgSizeY", geometry.sizeY);
    WriteIntSetting(L"DlgPosX", geometry.posX);
    WriteIntSetting(L"DlgPosY", geometry.posY);
}

AdvancedResetChoices ReadAdvancedResetChoices() {
    AdvancedResetChoices choices;
    int selection = 1;
    ReadIntSetting(L"AdvReset_Selection", selection);
    choices.selection = selection == 2 ? 2 : 1;
    for (int i = 0; i < kResetCategoryCount; ++i) choices.categories[i] = ReadCheck(kCategoryKeys[i]);
    for (int i = 0; i < kResetParameterCount; ++i) choices.parameters[i] = ReadCheck(kParameterKeys[i]);
    return choices;
}

void WriteAdvancedResetChoices(const AdvancedResetChoices& choices) {
    WriteIntSetting(L"AdvReset_Selection", choices.selection == 2 ? 2 : 1);
    for (int i = 0; i < kResetCategoryCount; ++i) WriteIntSetting(kCategoryKeys[i], choices.categories[i] ? 1 : 0);
    for (int i = 0; i < kResetParameterCount; ++i) WriteIntSetting(kParameterKeys[i], choices.parameters[i] ? 1 : 0);
}

}  // namespace vandrels
