// The scene file writer: collects the objects of a scene (honouring weak references) and writes the class
// directory, the object table and the roots.
#include "io/scene_writer.h"

#include "core/class_directory.h"
#include "io/chunk_writer.h"
#include "io/scene_file_error.h"
#include "io/scene_format.h"
#include "io/scene_links.h"

#include <map>
#include <unordered_map>
#include <unordered_set>

namespace hostrt {

namespace {

// What the file keeps of one object's outgoing pointers, asked once per save.
struct Edges {
    std::vector<std::pair<ReferenceTarget*, bool>> refs;  // target, real dependency
    ReferenceTarget* custAttribs = nullptr;
    std::vector<ReferenceTarget*> links;
    bool hasLinks = false;
};

Edges edgesOf(ReferenceTarget* obj) {
    Edges e;
    const int n = obj->NumRefs();
    e.refs.reserve(std::size_t(n > 0 ? n : 0));
    for (int i = 0; i < n; ++i) {
        ReferenceTarget* t = obj->GetReference(i);
        e.refs.emplace_back(t, t ? obj->IsRealDependency(t) != FALSE : true);
    }
    e.custAttribs = obj->GetCustAttribContainer();
    if (auto* links = dynamic_cast<ISceneLinks*>(obj)) {
        e.hasLinks = true;
        const int m = links->NumLinks();
        for (int i = 0; i < m; ++i) e.links.push_back(links->GetLink(i));
    }
    return e;
}

// Every object reachable through real references, host links and custom-attribute containers.
std::unordered_map<ReferenceTarget*, Edges> realReach(const std::vector<ReferenceTarget*>& roots) {
    std::unordered_map<ReferenceTarget*, Edges> reach;
    std::vector<ReferenceTarget*> todo;
    for (ReferenceTarget* r : roots)
        if (r) todo.push_back(r);
    while (!todo.empty()) {
        ReferenceTarget* obj = todo.back();
        todo.pop_back();
        if (reach.count(obj)) continue;
        Edges& e = reach.emplace(obj, edgesOf(obj)).first->second;
        for (auto& [t, real] : e.refs)
            if (t && real) todo.push_back(t);
        if (e.custAttribs) todo.push_back(e.custAttribs);
        for (ReferenceTarget* l : e.links)
            if (l) todo.push_back(l);
    }
    return reach;
}

// The targets written for an object, in file order (null and dropped weak references left out).
std::vector<ReferenceTarget*> writtenChildren(const Edges& e,
                                              const std::unordered_map<ReferenceTarget*, Edges>& reach) {
    std::vector<ReferenceTarget*> out;
    for (auto& [t, real] : e.refs)
        if (t && (real || reach.count(t))) out.push_back(t);
    if (e.custAttribs) out.push_back(e.custAttribs);
    for (ReferenceTarget* l : e.links)
        if (l) out.push_back(l);
    return out;
}

std::vector<ReferenceTarget*> orderObjects(const std::vector<ReferenceTarget*>& roots,
                                           const std::unordered_map<ReferenceTarget*, Edges>& reach) {
    std::vector<ReferenceTarget*> order;
    std::unordered_set<ReferenceTarget*> seen;
    struct Visit {
        std::vector<ReferenceTarget*> children;
        std::size_t next = 0;
    };
    std::vector<Visit> stack;
    auto enter = [&](ReferenceTarget* obj) {
        if (!obj || !seen.insert(obj).second) return;
        order.push_back(obj);
        stack.push_back(Visit{writtenChildren(reach.at(obj), reach)});
    };
    for (ReferenceTarget* root : roots) {
        enter(root);
        while (!stack.empty()) {
            Visit& v = stack.back();
            if (v.next == v.children.size()) {
                stack.pop_back();
                continue;
            }
            enter(v.children[v.next++]);  // may grow the stack: v is not used after this
        }
    }
    return order;
}

std::wstring hex(std::uint32_t v) {
    wchar_t buf[16];
    std::swprintf(buf, 16, L"0x%08X", unsigned(v));
    return buf;
}

std::wstring describeClass(ReferenceTarget* obj) {
    MSTR name;
    obj->GetClassName(name, false);
    const Class_ID cid = obj->ClassID();
    return L"class '" + name.str() + L"' (superclass " + hex(obj->SuperClassID()) + L", class id (" +
           hex(cid.PartA()) + L", " + hex(cid.PartB()) + L"))";
}

void putU32(ChunkWriter& w, std::uint32_t v) {
    ULONG n = 0;
    w.Write(&v, sizeof v, &n);  // the host is little-endian, as the layout is
}
void putIndexTable(ChunkWriter& w, USHORT id, const std::vector<std::int32_t>& table) {
    w.BeginChunk(id);
    putU32(w, std::uint32_t(table.size()));
    for (std::int32_t v : table) putU32(w, std::uint32_t(v));
    w.EndChunk();
}

}  // namespace

std::vector<ReferenceTarget*> CollectSceneObjects(const std::vector<ReferenceTarget*>& roots) {
    return orderObjects(roots, realReach(roots));
}

std::vector<std::uint8_t> WriteSceneFile(const std::vector<ReferenceTarget*>& roots, const MSTR& fileLabel) {
    const auto reach = realReach(roots);
    const std::vector<ReferenceTarget*> objects = orderObjects(roots, reach);
    std::unordered_map<const void*, std::int32_t> index;
    for (std::size_t i = 0; i < objects.size(); ++i) index.emplace(objects[i], std::int32_t(i));
    auto indexOf = [&](const void* p) -> std::int32_t {
        auto it = index.find(p);
        return it == index.end() ? -1 : it->second;
    };
    auto fail = [&](std::size_t i, const std::wstring& what) {
        throw SceneFileError(fileLabel, L"cannot save object " + std::to_wstring(i) + L" (" +
                                            describeClass(objects[i]) + L"): " + what);
    };

    // Class directory, in order of first use.
    std::map<std::pair<SClass_ID, Class_ID>, std::uint32_t> classIndex;
    std::vector<std::uint32_t> objectClass(objects.size());
    ChunkWriter file;
    file.BeginChunk(scenefile::kClassDirectory);
    for (std::size_t i = 0; i < objects.size(); ++i) {
        const auto key = std::make_pair(objects[i]->SuperClassID(), objects[i]->ClassID());
        auto found = classIndex.find(key);
        if (found == classIndex.end()) {
            ClassDesc* desc = ClassDirectory::Instance().Find(key.first, key.second);
            if (!desc) fail(i, L"its class is not registered in the class directory");
            found = classIndex.emplace(key, std::uint32_t(classIndex.size())).first;
            file.BeginChunk(scenefile::kClassEntry);
            putU32(file, key.first);
            putU32(file, key.second.PartA());
            putU32(file, key.second.PartB());
            file.WriteWString(desc->ClassName());
            file.EndChunk();
        }
        objectClass[i] = found->second;
    }
    file.EndChunk();

    file.BeginChunk(scenefile::kObjectTable);
    for (std::size_t i = 0; i < objects.size(); ++i) {
        ReferenceTarget* obj = objects[i];
        const Edges& e = reach.at(obj);
        file.BeginChunk(scenefile::kObject);

        file.BeginChunk(scenefile::kObjectClass);
        putU32(file, objectClass[i]);
        file.EndChunk();

        ChunkWriter own;
        own.SetRefIdLookup([&](void* p) { return int(indexOf(p)); });
        IOResult saved = IO_OK;
        try {
            saved = obj->Save(&own);
        } catch (const MAXException& ex) {
            fail(i, L"Save failed: " + ex.message.str());
        } catch (const std::exception& ex) {
            fail(i, L"Save failed: " + MSTR::FromUTF8(ex.what()).str());
        }
        if (saved == IO_ERROR) fail(i, L"Save answered an error");
        if (own.CurChunkDepth() != 0)
            fail(i, L"Save left " + std::to_wstring(own.CurChunkDepth()) + L" chunk(s) open");
        if (!own.Error().empty()) fail(i, L"Save misused the stream: " + MSTR::FromUTF8(own.Error()).str());
        if (own.HasTopLevelChunks() && own.HasTopLevelData())
            fail(i, L"Save wrote data outside its chunks");
        file.BeginChunk(scenefile::kObjectData);
        if (own.HasTopLevelChunks()) {
            file.WriteSubChunks(own.Bytes());
        } else if (!own.Bytes().empty()) {
            ULONG n = 0;
            file.Write(own.Bytes().data(), ULONG(own.Bytes().size()), &n);
        }
        file.EndChunk();

        std::vector<std::int32_t> refs;
        for (auto& [t, real] : e.refs) refs.push_back(t ? indexOf(t) : -1);  // dropped weak targets are absent
        putIndexTable(file, scenefile::kObjectRefs, refs);
        if (e.custAttribs) {
            file.BeginChunk(scenefile::kObjectCustAttribs);
            putU32(file, std::uint32_t(indexOf(e.custAttribs)));
            file.EndChunk();
        }
        if (e.hasLinks) {
            std::vector<std::int32_t> links;
            for (ReferenceTarget* l : e.links) links.push_back(l ? indexOf(l) : -1);
            putIndexTable(file, scenefile::kObjectLinks, links);
        }
        file.EndChunk();
    }
    file.EndChunk();

    std::vector<std::int32_t> rootIndexes;
    for (ReferenceTarget* r : roots) rootIndexes.push_back(r ? indexOf(r) : -1);
    putIndexTable(file, scenefile::kRoots, rootIndexes);

    if (!file.Error().empty())
        throw SceneFileError(fileLabel, L"cannot save: " + MSTR::FromUTF8(file.Error()).str());

    std::vector<std::uint8_t> out(scenefile::kMagic, scenefile::kMagic + sizeof scenefile::kMagic);
    for (int k = 0; k < 4; ++k) out.push_back(std::uint8_t(scenefile::kVersion >> (8 * k)));
    out.insert(out.end(), file.Bytes().begin(), file.Bytes().end());
    return out;
}

}  // namespace hostrt
