// The helper's chunks in the scene file: format version, file time, record counts, names to delete, renamed
// layers and layer entries. The parameter block and the records are saved by the host as references.
#include "helper/vandrels_helper.h"
#include "ioapi.h"
#include "records/chunk_io.h"

namespace {
enum : USHORT {
    kVersionChunk = 0x0000,
    kNumRefNodesChunk = 0x0001,
    kNumRefMaterialsChunk = 0x0002,
    kNumNodesToDeleteChunk = 0x0003,
    kNodeToDeleteChunk = 0x0004,
    kNumRenamedLayersChunk = 0x0005,
    kRenamedLayerChunk = 0x0006,
    kRenamedNameChunk = 0x0000,
    kRenamedNewNameChunk = 0x0001,
    kRenamedNoPrefixChunk = 0x0001,
    kNumRefLayersChunk = 0x0025,
    kRefLayerChunk = 0x0026,
    kFileTimeChunk = 0x0027,
};
constexpr float kFormatVersion = 10701.0f;

void writeChunk(ISave* isave, USHORT id, const void* data, ULONG size) {
    ULONG written = 0;
    isave->BeginChunk(id);
    isave->Write(data, size, &written);
    isave->EndChunk();
}

void writeInt(ISave* isave, USHORT id, int value) { writeChunk(isave, id, &value, sizeof(value)); }

void writeString(ISave* isave, USHORT id, const WStr& text) {
    isave->BeginChunk(id);
    isave->WriteWString(text);
    isave->EndChunk();
}

IOResult readExact(ILoad* iload, void* data, ULONG size) {
    ULONG read = 0;
    IOResult res = iload->Read(data, size, &read);
    return res == IO_OK && read == size ? IO_OK : IO_ERROR;
}

IOResult readInt(ILoad* iload, int& value) { return readExact(iload, &value, sizeof(value)); }


// Reads the next sub-chunk of the open chunk, whatever its id, with read.
template <class F> IOResult readSubChunk(ILoad* iload, F read) {
    if (iload->OpenChunk() != IO_OK) return IO_ERROR;
    IOResult res = read();
    iload->CloseChunk();
    return res;
}

IOResult readRenamedLayer(ILoad* iload, RenamedLayer& renamed) {
    IOResult res = readSubChunk(iload, [&] { return iload->ReadWStringChunk(renamed.name); });
    if (res == IO_OK) res = readSubChunk(iload, [&] { return iload->ReadWStringChunk(renamed.newName); });
    if (res == IO_OK) res = readSubChunk(iload, [&] { return readInt(iload, renamed.noPrefix); });
    return res;
}
}  // namespace

IOResult VandrelsHelper::Save(ISave* isave) {
    writeChunk(isave, kVersionChunk, &kFormatVersion, sizeof(kFormatVersion));
    writeChunk(isave, kFileTimeChunk, &data_.fileTime, sizeof(data_.fileTime));
    writeInt(isave, kNumRefNodesChunk, data_.refNodes.Count());
    writeInt(isave, kNumRefMaterialsChunk, data_.refMaterials.Count());
    writeInt(isave, kNumNodesToDeleteChunk, data_.nodesToDelete.Count());
    for (WStr* name : data_.nodesToDelete) writeString(isave, kNodeToDeleteChunk, name ? *name : WStr());
    writeInt(isave, kNumRenamedLayersChunk, data_.renamedLayers.Count());
    for (RenamedLayer* renamed : data_.renamedLayers) {
        const RenamedLayer entry = renamed ? *renamed : RenamedLayer();
        isave->BeginChunk(kRenamedLayerChunk);
        writeString(isave, kRenamedNameChunk, entry.name);
        writeString(isave, kRenamedNewNameChunk, entry.newName);
        writeInt(isave, kRenamedNoPrefixChunk, entry.noPrefix);
        isave->EndChunk();
    }
    writeInt(isave, kNumRefLayersChunk, data_.refLayers.Count());
    for (RefLayer* entry : data_.refLayers)
        if (entry && entry->layer) writeString(isave, kRefLayerChunk, entry->name);
    return IO_OK;
}

IOResult VandrelsHelper::Load(ILoad* iload) {
    if (iload->OpenChunk() != IO_OK || iload->CurChunkID() != kVersionChunk) return IO_ERROR;
    float version = 0.0f;  // read and not used: there is one format
    IOResult res = readExact(iload, &version, sizeof(version));
    iload->CloseChunk();
    while (res == IO_OK && (res = iload->OpenChunk()) == IO_OK) {
        int count = 0;
        switch (iload->CurChunkID()) {
        case kNumRefNodesChunk:
            if ((res = chunkio::ReadCount(iload, count)) == IO_OK) chunkio::SizeWithNulls(data_.refNodes, count);
            break;
        case kNumRefMaterialsChunk:
            if ((res = chunkio::ReadCount(iload, count)) == IO_OK) chunkio::SizeWithNulls(data_.refMaterials, count);
            break;
        case kNumNodesToDeleteChunk:
            if ((res = chunkio::ReadCount(iload, count)) == IO_OK) data_.nodesToDelete.Resize(count);
            break;
        case kNodeToDeleteChunk: {
            WStr name;
            if ((res = iload->ReadWStringChunk(name)) == IO_OK) data_.nodesToDelete.Append(new WStr(name));
            break;
        }
        case kNumRenamedLayersChunk:
            if ((res = chunkio::ReadCount(iload, count)) == IO_OK) data_.renamedLayers.Resize(count);
            break;
        case kRenamedLayerChunk: {
            auto* renamed = new RenamedLayer;
            if ((res = readRenamedLayer(iload, *renamed)) == IO_OK)
                data_.renamedLayers.Append(renamed);
            else
                delete renamed;
            break;
        }
        case kNumRefLayersChunk:
            if ((res = chunkio::ReadCount(iload, count)) == IO_OK) data_.refLayers.Resize(count);
            break;
        case kRefLayerChunk: {
            auto* entry = new RefLayer;
            if ((res = iload->ReadWStringChunk(entry->name)) == IO_OK)
                data_.refLayers.Append(entry);
            else
                delete entry;
            break;
        }
        case kFileTimeChunk:
            res = readExact(iload, &data_.fileTime, sizeof(data_.fileTime));
            break;
        default:
            break;
        }
        iload->CloseChunk();
    }
    if (res == IO_END) return IO_OK;
    for (WStr* name : data_.nodesToDelete) delete name;
    data_.nodesToDelete.ZeroCount();
    for (RenamedLayer* renamed : data_.renamedLayers) delete renamed;
    data_.renamedLayers.ZeroCount();
    return IO_ERROR;
}
