// SceneCompare: a test plug-in library that gives MAXScript cases the host's scene comparison. A case takes
// snapshots of the open scene and asks for their differences as readable lines:
//     before = SceneCompare.Snapshot()
//     ... save, reset, open ...
//     lines = SceneCompare.Differences before (SceneCompare.Snapshot()) byName:true
//     assert_equal 0 lines.count
// Snapshots are kept by number (1, 2, ...) until Clear; they hold text only, so they outlive the scene.
// The open scene as a stable text (nodes sorted by name path, one line per property) for stored baselines:
//     SceneCompare.Show "after reopening"    -- writes "-- scene after reopening", the lines, "-- end of scene"
//     SceneCompare.Text()                    -- the same lines as one string
#include "max.h"
#include "ifnpub.h"
#include "listener.h"

#include "scene_compare.h"

#include <string>
#include <vector>

namespace {

constexpr Interface_ID kSceneCompareId(0x5C817E57, 0x00000020);

enum : FunctionID { fnSnapshot, fnDifferences, fnDescribe, fnClear, fnText, fnShow };

std::vector<hostrt::test::SceneSnapshot> snapshots;

class SceneCompareInterface : public FPStaticInterface {
public:
    SceneCompareInterface() : FPStaticInterface(kSceneCompareId, L"SceneCompare", 0, nullptr, FP_CORE) {
        AppendFunction(fnSnapshot, L"Snapshot", TYPE_INT)
            .AppendFunction(fnDifferences, L"Differences", TYPE_STRING_TAB,
                            {FPParamDef(L"first", TYPE_INT), FPParamDef(L"second", TYPE_INT),
                             FPParamDef(L"byName", TYPE_BOOL).Keyword(FPValue(TYPE_BOOL, FALSE))})
            .AppendFunction(fnDescribe, L"Describe", TYPE_STRING_TAB, {FPParamDef(L"snapshot", TYPE_INT)})
            .AppendFunction(fnClear, L"Clear", TYPE_VOID)
            .AppendFunction(fnText, L"Text", TYPE_STRING)
            .AppendFunction(fnShow, L"Show", TYPE_VOID, {FPParamDef(L"title", TYPE_STRING)});
    }

protected:
    FPStatus _dispatch_fn(FunctionID fid, TimeValue, FPValue& result, FPParams* p) override {
        switch (fid) {
        case fnSnapshot:
            snapshots.push_back(hostrt::test::TakeSnapshot());
            result = FPValue(int(snapshots.size()));
            return FPS_OK;
        case fnDifferences: {
            hostrt::test::CompareOptions options;
            options.byName = p->params[2].i != 0;
            result = StringTab(hostrt::test::CompareSnapshots(Snapshot(p->params[0].i), Snapshot(p->params[1].i), options));
            return FPS_OK;
        }
        case fnDescribe: result = StringTab(hostrt::test::DescribeSnapshot(Snapshot(p->params[0].i))); return FPS_OK;
        case fnClear: snapshots.clear(); return FPS_OK;
        case fnText: result = FPValue(MSTR(MaxSDK::FromUTF8(SceneText()))); return FPS_OK;
        case fnShow: {
            const MSTR title(p->params[0].s ? p->params[0].s : L"");
            mputs((L"-- scene " + title + L"\n").data());
            mputs(MSTR(MaxSDK::FromUTF8(SceneText())).data());
            mputs(L"-- end of scene\n");
            return FPS_OK;
        }
        default: return FPS_NO_SUCH_FUNCTION;
        }
    }

private:
    static std::string SceneText() { return hostrt::test::SnapshotText(hostrt::test::TakeSnapshot()); }
    static const hostrt::test::SceneSnapshot& Snapshot(int number) {
        if (number < 1 || number > int(snapshots.size()))
            throw MAXException(MSTR(L"SceneCompare: no snapshot " + std::to_wstring(number) + L" (there are " +
                                    std::to_wstring(snapshots.size()) + L")"));
        return snapshots[std::size_t(number - 1)];
    }
    // The lines as a string table (the value copies the strings).
    static FPValue StringTab(const std::vector<std::string>& lines) {
        std::vector<MSTR> texts;
        for (const std::string& line : lines) texts.push_back(MSTR(MaxSDK::FromUTF8(line)));
        Tab<const MCHAR*> tab;
        for (const MSTR& text : texts) {
            const MCHAR* chars = text.data();
            tab.Append(1, &chars);
        }
        return FPValue(tab);
    }
};
SceneCompareInterface sceneCompare;

}  // namespace

MAX_PLUGIN_EXPORT const MCHAR* LibDescription() { return L"Scene comparison for MAXScript tests"; }
MAX_PLUGIN_EXPORT int LibNumberClasses() { return 0; }
MAX_PLUGIN_EXPORT ClassDesc* LibClassDesc(int) { return nullptr; }
MAX_PLUGIN_EXPORT ULONG LibVersion() { return VERSION_3DSMAX; }
MAX_PLUGIN_EXPORT int LibInitialize() { return TRUE; }
MAX_PLUGIN_EXPORT int LibShutdown() {
    snapshots.clear();
    return TRUE;
}
MAX_PLUGIN_EXPORT ULONG CanAutoDefer() { return FALSE; }
