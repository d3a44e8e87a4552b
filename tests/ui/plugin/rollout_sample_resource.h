// Identifiers of the rollout sample's resources.
#pragma once
#define IDS_SAMPLE_PARAMETERS 1
#define IDS_SHAPE_ROUND 2
#define IDS_SHAPE_SQUARE 3
#define IDS_SHAPE_STAR 4
#define IDD_SAMPLE_ROLLOUT 100
#define IDC_HEIGHT_EDIT 1001
#define IDC_HEIGHT_SPIN 1002
#define IDC_COUNT_EDIT 1003
#define IDC_COUNT_SPIN 1004
#define IDC_SHAPE_COMBO 1005
