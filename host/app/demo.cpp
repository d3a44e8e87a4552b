// `maxhost demo`: the Vandrels plug-in at work on a small set, driven from MAXScript as a user would drive it:
// a set saved as a reference file, referenced into a shot, edited there, the shot saved, reset and opened again
// with the edits back on the freshly merged set.
#include "commands.h"

#include "core/plugin_manager.h"
#include "maxscript/fp_bridge.h"

namespace maxhost {

namespace {

constexpr const wchar_t* kDemoScript = LR"MXS(
fn showScene title = (
    format "\n== %: % objects\n" title objects.count
    for o in objects do (
        parentName = if o.parent == undefined then "-" else o.parent.name
        format "  %  (%)  parent:%  pos:%  wirecolor:%\n" o.name (classOf o) parentName o.pos o.wirecolor
    )
)

demoFolder = (getDir #temp) + "/maxhost-demo"
makeDir demoFolder
setFile = demoFolder + "/set.max"
shotFile = demoFolder + "/shot.max"

-- The set builder's file: a table carrying a lamp.
resetMaxFile #noPrompt
table = box name:"table" length:120 width:60 height:5 pos:[0,0,70] wirecolor:(color 200 150 0)
lamp = sphere name:"lamp" radius:8 pos:[40,0,85] parent:table wirecolor:(color 90 90 90)
if not (saveMaxFile setFile quiet:true) do throw "could not save the set"
showScene "The set, saved as a reference file"

-- The shot references the set: one helper stands for the file, a record for each node it brought.
resetMaxFile #noPrompt
helper = Vandrels.AddVandrel setFile
format "\nReferenced the set through helper \"%\": % node records, % reference(s) in the scene\n" \
    helper.name (helper.NumRefNodes()) (Vandrels.NumVandrels())

-- Local edits of referenced nodes are kept as overrides.
$table.pos = [0,0,90]
$lamp.wirecolor = color 255 220 0
showScene "Edited in the shot"
if not (saveMaxFile shotFile quiet:true) do throw "could not save the shot"
format "\nSaved the shot as %\n" (filenameFromPath shotFile)

-- The next day: the shot opens, the set is merged afresh and the edits go back on.
resetMaxFile #noPrompt
if not (loadMaxFile shotFile quiet:true) do throw "could not open the shot"
showScene "The shot opened again"

resetMaxFile #noPrompt
deleteFile shotFile
deleteFile setFile
format "\nDemo done.\n"
)MXS";

}  // namespace

int RunDemo(std::FILE* out) {
    if (!hostrt::mxs::FindCoreInterfaceValue(L"Vandrels")) {
        std::fprintf(stderr, "maxhost demo: the Vandrels plug-in is not loaded; build it (target vandrels) or name "
                             "its folder with --plugins\n");
        for (const std::string& problem : hostrt::PluginManager::Instance().Problems())
            std::fprintf(stderr, "  %s\n", problem.c_str());
        return 1;
    }
    const int rc = RunScriptText(kDemoScript, L"maxhost demo");
    std::fflush(out);
    return rc;
}

}  // namespace maxhost
