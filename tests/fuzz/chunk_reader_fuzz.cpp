// libFuzzer target: arbitrary bytes through the chunk reader (every chunk at every depth, read as data and as
// text) and through the scene-file validator, then through object creation and Load when they validate.
#include "core/class_directory.h"
#include "core/ref_internal.h"
#include "io/chunk_reader.h"
#include "io/scene_file_error.h"
#include "io/scene_reader.h"
#include "scene/scene.h"

#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

// Opens every chunk, descending into containers, reading leaves both ways; the walk must end.
void walkChunks(const std::uint8_t* data, std::size_t size) {
    hostrt::ChunkReader r(data, size);
    std::size_t steps = 0;
    int depth = 0;
    for (;;) {
        if (++steps > size + 2) std::abort();  // every step consumes a header or closes a chunk
        const IOResult res = r.OpenChunk();
        if (res == IO_ERROR) return;
        if (res == IO_END) {
            if (depth == 0) return;
            if (r.CloseChunk() != IO_OK) std::abort();
            --depth;
            continue;
        }
        if (r.CurChunkLength() > size) std::abort();
        if (r.CurChunkIsContainer()) {
            ++depth;
            continue;
        }
        std::uint8_t buf[7];
        ULONG got = 0;
        const ULONG want = r.CurChunkID() % 8;
        const IOResult rr = r.Read(buf, want, &got);
        if (got > want || (rr == IO_OK) != (got == want)) std::abort();
        MCHAR* text = nullptr;
        if (r.ReadWStringChunk(&text) == IO_OK && !text) std::abort();
        if (r.CloseChunk() != IO_OK) std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool registered = [] {
        hostrt::RegisterBuiltinClasses();
        hostrt::RegisterSceneClasses();
        return true;
    }();
    (void)registered;

    walkChunks(data, size);
    const std::size_t live = hostrt::LiveAnimatableCount();
    try {
        const hostrt::SceneImage image = hostrt::ParseSceneFile(std::vector<std::uint8_t>(data, data + size), L"fuzz.max");
        hostrt::DestroySceneObjects(hostrt::InstantiateScene(image, L"fuzz.max"));
    } catch (const hostrt::SceneFileError&) {
        // A clear refusal is the expected answer to most inputs.
    }
    if (hostrt::LiveAnimatableCount() != live) std::abort();  // loaded objects must all be destroyed
    return 0;
}
