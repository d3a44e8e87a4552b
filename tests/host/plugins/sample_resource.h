// Identifiers of the sample library's resources.
#pragma once
#define IDS_SAMPLE_TARGET 1
#define IDS_SAMPLE_ESCAPES 0x20
