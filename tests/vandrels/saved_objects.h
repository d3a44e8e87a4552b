// Reads a scene file back with the host's chunk reader: for every object of the file its class and the exact
// bytes its Save wrote, so tests can check the library's chunks byte for byte.
#pragma once

#include "io/chunk_reader.h"
#include "io/chunk_writer.h"
#include "io/file_bytes.h"
#include "io/scene_format.h"
#include "maxtypes.h"
#include "ref.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

namespace vtest {

struct SavedObject {
    Class_ID classId;
    std::vector<std::uint8_t> data;  // the payload of the object's data chunk: the chunks its Save wrote
};

inline std::vector<SavedObject> ReadSavedObjects(const MSTR& file) {
    namespace sf = hostrt::scenefile;
    const std::vector<std::uint8_t> bytes = hostrt::ReadFileBytes(file);
    std::vector<SavedObject> objects;
    if (bytes.size() < sf::kHeaderSize) {
        ADD_FAILURE() << "not a scene file";
        return objects;
    }
    hostrt::ChunkReader r(bytes.data() + sf::kHeaderSize, bytes.size() - sf::kHeaderSize);
    std::vector<Class_ID> classes;
    std::vector<std::uint32_t> classOf;
    while (r.OpenChunk() == IO_OK) {
        if (r.CurChunkID() == sf::kClassDirectory) {
            while (r.OpenChunk() == IO_OK) {
                std::uint32_t entry[3] = {};
                std::memcpy(entry, r.PayloadData(), sizeof entry);
                classes.push_back(Class_ID(entry[1], entry[2]));
                r.CloseChunk();
            }
        } else if (r.CurChunkID() == sf::kObjectTable) {
            while (r.OpenChunk() == IO_OK) {
                SavedObject obj;
                std::uint32_t cls = 0;
                while (r.OpenChunk() == IO_OK) {
                    if (r.CurChunkID() == sf::kObjectClass) std::memcpy(&cls, r.PayloadData(), sizeof cls);
                    if (r.CurChunkID() == sf::kObjectData) obj.data.assign(r.PayloadData(), r.PayloadData() + r.PayloadSize());
                    r.CloseChunk();
                }
                classOf.push_back(cls);
                objects.push_back(std::move(obj));
                r.CloseChunk();
            }
        }
        r.CloseChunk();
    }
    for (std::size_t i = 0; i < objects.size(); ++i)
        if (classOf[i] < classes.size()) objects[i].classId = classes[classOf[i]];
    return objects;
}

// The saved data of every object of class id, in file order.
inline std::vector<std::vector<std::uint8_t>> SavedDataOf(const std::vector<SavedObject>& objects, Class_ID id) {
    std::vector<std::vector<std::uint8_t>> out;
    for (const SavedObject& o : objects)
        if (o.classId == id) out.push_back(o.data);
    return out;
}

// The chunks obj's Save writes, every chunk closed again.
inline std::vector<std::uint8_t> SavedBy(ReferenceMaker* obj) {
    hostrt::ChunkWriter w;
    EXPECT_EQ(obj->Save(&w), IO_OK);
    EXPECT_EQ(w.CurChunkDepth(), 0);
    return w.Bytes();
}

// Runs obj's Load over bytes.
inline IOResult LoadInto(ReferenceMaker* obj, const std::vector<std::uint8_t>& bytes) {
    hostrt::ChunkReader r(bytes.data(), bytes.size());
    return obj->Load(&r);
}

// Chunks laid out the way the file format writes them, independently of the library: the expected bytes.
class ChunkBytes {
public:
    template <class T> ChunkBytes& Chunk(USHORT id, T value) {
        ULONG n = 0;
        w_.BeginChunk(id);
        w_.Write(&value, sizeof value, &n);
        w_.EndChunk();
        return *this;
    }
    ChunkBytes& Text(USHORT id, const MCHAR* s) {
        w_.BeginChunk(id);
        w_.WriteWString(s);
        w_.EndChunk();
        return *this;
    }
    ChunkBytes& Raw(USHORT id, std::vector<std::uint8_t> payload) {
        ULONG n = 0;
        w_.BeginChunk(id);
        w_.Write(payload.data(), ULONG(payload.size()), &n);
        w_.EndChunk();
        return *this;
    }
    ChunkBytes& Wrapped(USHORT id, const ChunkBytes& inner) {
        w_.BeginChunk(id);
        w_.WriteSubChunks(inner.Get());
        w_.EndChunk();
        return *this;
    }
    const std::vector<std::uint8_t>& Get() const { return w_.Bytes(); }

private:
    hostrt::ChunkWriter w_;
};

}  // namespace vtest
