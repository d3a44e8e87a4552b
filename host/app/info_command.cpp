// maxhost info SCENE.max [--json]: what a scene file holds, read without opening it as the scene and without
// loading anything its objects refer to. The file's objects are made and loaded apart from the open scene; every
// object that answers ISceneInfo describes itself (a plug-in's reference helper: its file, options and records),
// and the listing goes to standard output as text or JSON.
#include "commands.h"

#include "io/file_bytes.h"
#include "io/scene_reader.h"
#include "maxexception.h"
#include "sceneinfo.h"

#include <exception>

namespace maxhost {

namespace {

void Print(std::FILE* out, const MSTR& text) { std::fputs(text.ToUTF8().c_str(), out); }

}  // namespace

int ShowSceneInfo(const std::string& file, bool json, std::FILE* out) {
    const MSTR path = MSTR::FromUTF8(file.c_str());
    try {
        hostrt::SceneImage image = hostrt::ParseSceneFile(hostrt::ReadFileBytes(path), path);
        hostrt::CheckSceneClasses(image, path);
        const hostrt::LoadedScene loaded = hostrt::InstantiateScene(image, path);
        struct Dispose {
            const hostrt::LoadedScene& scene;
            ~Dispose() { hostrt::DestroySceneObjects(scene); }
        } dispose{loaded};
        auto describe = [&](InfoWriter& w) {
            w.Text(L"scene", path.data());
            w.BeginList(L"items");
            for (std::size_t i = 0; i < loaded.objects.size(); ++i) {
                ReferenceTarget* object = loaded.objects[i];
                if (!object || Animatable::GetAnimByHandle(loaded.handles[i]) != object) continue;
                auto* info = dynamic_cast<ISceneInfo*>(object->GetInterface(SCENE_INFO_INTERFACE));
                if (!info) continue;
                w.BeginObject(nullptr);
                info->DescribeSceneInfo(w);
                w.EndObject();
            }
            w.EndList();
        };
        Print(out, json ? SceneInfoJson(describe) : SceneInfoText(describe));
        return 0;
    } catch (const MAXException& e) {
        std::fprintf(stderr, "maxhost: info: %s\n", e.message.ToUTF8().c_str());
    } catch (const std::exception& e) {
        std::fprintf(stderr, "maxhost: info: %s: %s\n", file.c_str(), e.what());
    }
    return 1;
}

}  // namespace maxhost
