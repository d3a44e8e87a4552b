#include "frame/settings.h"

#include "maxscript/string_literal.h"

#include "maxscript/maxscript.h"

#include <cwchar>

namespace vandrels {

namespace {

bool printTimes = false;
bool printTimesMustBeRead = true;
bool saveRefsAsMerged = false;

// Runs a settings text quietly (errors suppressed and logged by the host), answering its value in result.
void RunSettingsText(const MSTR& text, FPValue* result = nullptr) {
    ExecuteMAXScriptScript(text.data(), MAXScript::ScriptSource::Embedded, TRUE, result, TRUE);
}

}  // namespace

bool ReadStringSetting(const MCHAR* key, MSTR& value) {
    MSTR text;
    text.printf(L"GetINISetting (getMAXIniFile()) \"Vandrels\" %s;", MaxScriptStringLiteral(key).c_str());
    FPValue result;
    RunSettingsText(text, &result);
    if (result.type != TYPE_STRING || !result.s || !*result.s) return false;
    value = result.s;
    return true;
}

bool ReadIntSetting(const MCHAR* key, int& value) {
    MSTR text;
    if (!ReadStringSetting(key, text)) return false;
    value = int(std::wcstol(text.data(), nullptr, 10));
    return true;
}

void WriteIntSetting(const MCHAR* key, int value) {
    MSTR text;
    text.printf(L"SetINISetting (getMAXIniFile()) \"Vandrels\" %s \"%d\";", MaxScriptStringLiteral(key).c_str(), value);
    RunSettingsText(text);
}

void WriteStringSetting(const MCHAR* key, const MCHAR* value) {
    MSTR text;
    text.printf(L"SetINISetting (getMAXIniFile()) \"Vandrels\" %s %s;", MaxScriptStringLiteral(key).c_str(),
                MaxScriptStringLiteral(value ? value : L"").c_str());
    RunSettingsText(text);
}

bool GetMergeForNetworkRender() {
    FPValue result;
    RunSettingsText(L"VDMFNR=(GetINISetting (getMAXIniFile()) \"Vandrels\" \"MergeForNetworkRender\");"
                    L"if VDMFNR==\"\" then -1 else VDMFNR as integer",
                    &result);
    if (result.type != TYPE_INT) return false;
    return result.i > 0;
}

void SetMergeForNetworkRender(bool on) {
    RunSettingsText(on ? L"SetINISetting (getMAXIniFile()) \"Vandrels\" \"MergeForNetworkRender\" \"1\""
                       : L"SetINISetting (getMAXIniFile()) \"Vandrels\" \"MergeForNetworkRender\" \"0\"");
}

bool GetShowDuplicatedNamesWarning() {
    int hide = 0;
    if (!ReadIntSetting(L"HideDuplicatedNamesWarning", hide)) return true;
    return hide == 0;
}

void SetShowDuplicatedNamesWarning(bool show) { WriteIntSetting(L"HideDuplicatedNamesWarning", show ? 0 : 1); }

bool GetPrintTimes() {
    if (!printTimesMustBeRead) return printTimes;
    printTimesMustBeRead = false;
    int stored = 0;
    if (ReadIntSetting(L"PrintTimes", stored)) {
        printTimes = stored != 0;
    } else {
        WriteIntSetting(L"PrintTimes", 0);
        printTimes = false;
    }
    return printTimes;
}

void SetPrintTimes(bool on) {
    printTimes = on;
    WriteIntSetting(L"PrintTimes", on ? 1 : 0);
    printTimesMustBeRead = false;
}

bool GetSaveRefsAsMerged() { return saveRefsAsMerged; }
void SetSaveRefsAsMerged(bool on) { saveRefsAsMerged = on; }

}  // namespace vandrels
