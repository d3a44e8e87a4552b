// Reading a scene file in two steps: ParseSceneFile reads and validates everything into memory without
// creating anything; InstantiateScene then creates, loads and links the objects (layout in
// docs/scene-files.md). Both throw SceneFileError naming the file and what is wrong.
#pragma once

#include "ref.h"

#include <cstdint>
#include <vector>

namespace hostrt {

struct SceneClassRecord {
    SClass_ID superClass = 0;
    Class_ID classId;
    MSTR name;  // for messages only
};

struct SceneObjectRecord {
    std::uint32_t classIndex = 0;
    std::size_t offset = 0;      // of the object's chunk in the file
    std::size_t dataOffset = 0;  // payload of its data chunk in the file
    std::size_t dataSize = 0;
    std::vector<std::int32_t> refs;   // object index per reference, -1 for none
    std::vector<std::int32_t> links;  // object index per host link, -1 for none
    bool hasLinks = false;
    std::int32_t custAttribs = -1;  // object index of its custom-attribute container
};

// A scene file read into memory and checked: every chunk well formed, every index in range.
struct SceneImage {
    std::vector<std::uint8_t> bytes;
    std::vector<SceneClassRecord> classes;
    std::vector<SceneObjectRecord> objects;
    std::vector<std::int32_t> roots;

    const SceneClassRecord& ClassOf(std::size_t object) const { return classes[objects[object].classIndex]; }
};

// Reads and validates a whole file. Touches nothing outside the image.
SceneImage ParseSceneFile(std::vector<std::uint8_t> bytes, const MSTR& fileLabel);

// Fails naming the first class of the image that the class directory does not know.
void CheckSceneClasses(const SceneImage& image, const MSTR& fileLabel);

struct LoadedScene {
    std::vector<ReferenceTarget*> objects;  // in file order
    std::vector<AnimHandle> handles;        // of objects, to tell which are still alive
    std::vector<ReferenceTarget*> roots;    // null for a root saved as none
};

// Creates every object through the class directory (loading), runs each Load, restores the references in
// index order, then the host links and custom-attribute containers, then runs the post-load callbacks.
// On failure every object created so far is destroyed before the error is thrown.
LoadedScene InstantiateScene(const SceneImage& image, const MSTR& fileLabel);

// Deletes the objects of a loaded scene that are still alive, without reference messages.
void DestroySceneObjects(const LoadedScene& scene);

// Describes a class for messages: "class 'Name' (superclass 0x..., class id (0x..., 0x...))".
std::wstring DescribeSceneClass(const SceneClassRecord& record);

}  // namespace hostrt
