// String-table ids of the steps an animatable record reports as its last operation.
#pragma once

constexpr int kStepOverrideLocDep = 118;
constexpr int kStepGetAnimByPath = 119;
constexpr int kStepDefaultOverride = 120;
constexpr int kStepBlockPreOverride = 121;
constexpr int kStepBlock2PreOverride = 122;
constexpr int kStepParentOverride = 123;
constexpr int kStepSetAnim = 124;
