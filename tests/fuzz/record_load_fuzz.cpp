// libFuzzer target: the chunk loaders of every class Vandrels registers (helper, records, animatable records,
// holder). The first byte picks the class, the rest is what its Load reads; then the post-load callbacks run and
// the object is deleted. Loading must not crash or leak, whatever the chunks hold.
//
// Seeds: with VANDRELS_FUZZ_SEEDS=<folder> set, the target writes one seed per class (what a fresh object of it
// saves) and, for every scene file already in that folder, one seed per object of the plug-in's classes in it,
// then exits.
#include "plugin_session.h"

#include "core/paired_scopes.h"
#include "io/chunk_reader.h"
#include "io/chunk_writer.h"
#include "io/file_bytes.h"
#include "io/scene_file_error.h"
#include "io/scene_reader.h"
#include "plugapi.h"
#include "ref.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

struct LoadableClass {
    SClass_ID superClass;
    Class_ID classId;
};

// The plug-in's classes whose objects are reference makers (what has a Load), in the library's order.
const std::vector<LoadableClass>& Classes() {
    static const std::vector<LoadableClass> classes = [] {
        std::vector<LoadableClass> out;
        for (ClassDesc* desc : fuzz::StartHostWithVandrels().classes) {
            auto* made = static_cast<Animatable*>(CreateInstance(desc->SuperClassID(), desc->ClassID()));
            if (auto* maker = dynamic_cast<ReferenceMaker*>(made)) {
                out.push_back({desc->SuperClassID(), desc->ClassID()});
                if (auto* target = dynamic_cast<ReferenceTarget*>(maker)) {
                    hostrt::RefMessagesOffScope off;
                    target->DeleteMe();
                } else {
                    maker->DeleteThis();
                }
            } else if (made) {
                made->DeleteThis();
            }
        }
        return out;
    }();
    return classes;
}

void Delete(ReferenceMaker* maker) {
    hostrt::RefMessagesOffScope off;
    hostrt::HoldSuspendedScope suspended;
    if (auto* target = dynamic_cast<ReferenceTarget*>(maker))
        target->DeleteMe();
    else
        maker->DeleteThis();
}

void WriteSeed(const std::filesystem::path& file, std::uint8_t classIndex, const std::vector<std::uint8_t>& chunks) {
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out.put(char(classIndex));
    out.write(reinterpret_cast<const char*>(chunks.data()), std::streamsize(chunks.size()));
}

void WriteSeeds(const std::filesystem::path& dir) {
    const auto& classes = Classes();
    for (std::size_t i = 0; i < classes.size(); ++i) {
        auto* maker = dynamic_cast<ReferenceMaker*>(
            static_cast<Animatable*>(CreateInstance(classes[i].superClass, classes[i].classId)));
        hostrt::ChunkWriter w;
        if (maker->Save(&w) == IO_OK) WriteSeed(dir / ("class_" + std::to_string(i)), std::uint8_t(i), w.Bytes());
        Delete(maker);
    }
    for (const auto& entry : std::filesystem::directory_iterator(dir)) {
        if (entry.path().extension() != ".max") continue;
        try {
            const hostrt::SceneImage image =
                hostrt::ParseSceneFile(hostrt::ReadFileBytes(MSTR::FromUTF8(entry.path().string())), L"seed.max");
            for (std::size_t o = 0; o < image.objects.size(); ++o)
                for (std::size_t i = 0; i < classes.size(); ++i)
                    if (image.ClassOf(o).classId == classes[i].classId &&
                        image.ClassOf(o).superClass == classes[i].superClass) {
                        const auto& obj = image.objects[o];
                        const auto* begin = image.bytes.data() + obj.dataOffset;
                        WriteSeed(dir / (entry.path().stem().string() + "_object_" + std::to_string(o)),
                                  std::uint8_t(i), std::vector<std::uint8_t>(begin, begin + obj.dataSize));
                    }
        } catch (const hostrt::SceneFileError&) {
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    Classes();
    if (const char* seeds = std::getenv("VANDRELS_FUZZ_SEEDS")) {
        WriteSeeds(seeds);
        std::exit(0);
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto& classes = Classes();
    if (size == 0 || classes.empty()) return 0;
    const LoadableClass& cls = classes[data[0] % classes.size()];
    auto* maker = dynamic_cast<ReferenceMaker*>(static_cast<Animatable*>(CreateInstance(cls.superClass, cls.classId)));
    if (!maker) std::abort();
    hostrt::ChunkReader reader(data + 1, size - 1);
    {
        hostrt::HoldSuspendedScope suspended;
        maker->Load(&reader);
        for (std::size_t k = 0; k < reader.PostLoadCallbacks().size(); ++k) reader.PostLoadCallbacks()[k]->proc(&reader);
    }
    Delete(maker);
    return 0;
}
