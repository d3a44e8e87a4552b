// libFuzzer target: arbitrary bytes opened as a scene file by the host, with Vandrels loaded, so files holding
// the helper and every record class reach their loaders, the post-load steps and the scene-opened handling.
// A damaged file must be refused with a scene-file error; then the scene is reset for the next input.
#include "plugin_session.h"

#include "hold.h"
#include "io/scene_file_error.h"
#include "scene/scene.h"
#include "strclass.h"

#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzz::StartHostWithVandrels();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::filesystem::path file =
        std::filesystem::temp_directory_path() / ("vandrels_scene_fuzz_" + std::to_string(::getpid()) + ".max");
    {
        std::ofstream out(file, std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(data), std::streamsize(size));
    }
    auto& scene = hostrt::Scene::Instance();
    try {
        scene.OpenScene(MSTR::FromUTF8(file.string()));
    } catch (const hostrt::SceneFileError&) {
        // A clear refusal is the expected answer to most inputs.
    }
    theHold.FlushUndoBuffer();
    scene.ResetScene();
    return 0;
}
