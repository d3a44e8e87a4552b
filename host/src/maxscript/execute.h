// What ExecuteMAXScriptScript did with errors: those shown to the user and those swallowed quietly but
// logged. Tests and the application read them.
#pragma once

#include "ifnpub.h"
#include "maxscript/value.h"

#include <string>
#include <vector>

namespace hostrt::mxs {

// Error reports (as the listener prints them) in the order they happened.
std::vector<std::wstring> ShownErrors();
std::vector<std::wstring> QuietErrorLog();
void ClearErrorRecords();

// A script value as ExecuteMAXScriptScript hands it to C++ (see maxscript/maxscript.h).
void ResultToFPValue(const Value& v, FPValue& out);

// Keeps an error report: shown (quiet false) or, when logQuiet, in the quiet-error log.
void RecordError(const std::wstring& report, bool quiet, bool logQuiet);

}  // namespace hostrt::mxs
