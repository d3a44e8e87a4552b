#include "helper/scene_file_check.h"

#include "maxscript/maxscript.h"
#include "maxscript/string_literal.h"

#include <string>
#include <string_view>

namespace vandrels {

namespace {

// The reason of a caught script error: "-- Runtime error: <reason>" gives "<reason>".
MSTR ReasonOf(std::wstring text) {
    constexpr std::wstring_view kLabel = L"-- Runtime error: ";
    if (text.rfind(kLabel, 0) == 0) text.erase(0, kLabel.size());
    while (!text.empty() && (text.back() == L'\n' || text.back() == L'\r')) text.pop_back();
    return MSTR(text.c_str());
}

}  // namespace

MSTR SceneFileReadProblem(const MSTR& path) {
    const std::wstring text = L"try (getMaxFileVersionData " + MaxScriptStringLiteral(path.data()) +
                              L" quiet:false; \"\") catch (getCurrentException())";
    FPValue result;
    if (!ExecuteMAXScriptScript(text.c_str(), MAXScript::ScriptSource::Embedded, TRUE, &result, FALSE))
        return path + L": the host could not check the file";
    if (result.type == TYPE_STRING && result.s && *result.s) return ReasonOf(result.s);
    return MSTR();
}

}  // namespace vandrels
