// The library's preferences: the persistent ones in the host INI file (section "Vandrels"), read and written
// only through MAXScript texts the host runs, and the flags that last for one run of the host.
#pragma once

#include "strclass.h"

namespace vandrels {

// Reads a setting. True when the stored text is there and not empty; the integer form converts it as the C
// library does in base 10 ("12ab" gives 12, "abc" 0). A failed read leaves value untouched, so a caller
// presets its default.
bool ReadIntSetting(const MCHAR* key, int& value);
bool ReadStringSetting(const MCHAR* key, MSTR& value);
// Writes a setting; a failed write is silent.
void WriteIntSetting(const MCHAR* key, int value);
void WriteStringSetting(const MCHAR* key, const MCHAR* value);

// Merge for network render: read from the INI file at every query (missing or not a number: off).
bool GetMergeForNetworkRender();
void SetMergeForNetworkRender(bool on);

// Whether the duplicated-names warning is shown: the inverse of "HideDuplicatedNamesWarning" (missing: shown).
bool GetShowDuplicatedNamesWarning();
void SetShowDuplicatedNamesWarning(bool show);

// Whether timing lines are printed. The INI file is read once per run, by the first query; a missing value is
// written as 0 then.
bool GetPrintTimes();
void SetPrintTimes(bool on);

// Save references merged: an in-memory flag, off whenever the library loads.
bool GetSaveRefsAsMerged();
void SetSaveRefsAsMerged(bool on);

}  // namespace vandrels
