// The scene file reader: validation of the whole file in memory, then creation, loading and linking of the
// objects through the class directory.
#include "io/scene_reader.h"

#include "core/class_directory.h"
#include "core/paired_scopes.h"
#include "core/ref_internal.h"
#include "hold.h"
#include "io/chunk_reader.h"
#include "io/scene_file_error.h"
#include "io/scene_format.h"
#include "io/scene_links.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>

namespace hostrt {

namespace {

std::wstring hex(std::uint32_t v, int digits = 8) {
    wchar_t buf[16];
    std::swprintf(buf, 16, L"0x%0*X", digits, unsigned(v));
    return buf;
}

std::wstring num(std::size_t v) { return std::to_wstring(v); }

std::wstring sectionOf(USHORT id) {
    switch (id) {
    case scenefile::kClassDirectory: return L"in the class directory";
    case scenefile::kObjectTable: return L"in the object table";
    case scenefile::kRoots: return L"in the scene roots";
    default: return L"in chunk " + hex(id, 4);
    }
}

bool isContainer(const SceneClassRecord& c) {
    return c.superClass == REF_MAKER_CLASS_ID && c.classId == CUSTATTRIB_CONTAINER_CLASS_ID;
}

// Reads and checks the file into an image; every failure names the byte and the part of the file.
class Parser {
public:
    Parser(SceneImage& image, const MSTR& label) : img_(image), label_(label) {}

    void Run() {
        checkHeader();
        const auto& b = img_.bytes;
        ChunkReader r(b.data() + scenefile::kHeaderSize, b.size() - scenefile::kHeaderSize);
        bool haveClasses = false, haveObjects = false, haveRoots = false, skippedUnknown = false;
        for (;;) {
            section_ = r.Remaining() >= 2 ? sectionOf(USHORT(b[r.Position() + scenefile::kHeaderSize] |
                                                             (b[r.Position() + scenefile::kHeaderSize + 1] << 8)))
                                          : L"at the end of the file";
            const IOResult res = r.OpenChunk();
            if (res == IO_END) break;
            if (res == IO_ERROR) streamError(r);
            switch (r.CurChunkID()) {
            case scenefile::kClassDirectory:
                once(haveClasses, r, L"a second class directory");
                readClasses(r);
                break;
            case scenefile::kObjectTable:
                once(haveObjects, r, L"a second object table");
                readObjects(r);
                break;
            case scenefile::kRoots:
                once(haveRoots, r, L"a second list of scene roots");
                img_.roots = readIndexTable(r, L"the root list");
                break;
            default: skippedUnknown = true; break;  // chunks of later versions are skipped
            }
            r.CloseChunk();
        }
        // Required chunks missing after well-formed ones: the file was cut at a chunk boundary, unless it
        // holds chunks this host does not know (then it is no file this host wrote).
        const std::wstring end = skippedUnknown ? L"damaged: " : L"truncated at byte " + num(b.size()) + L": ";
        if (!haveClasses) fail(end + L"the class directory is missing");
        if (!haveObjects) fail(end + L"the object table is missing");
        if (!haveRoots) fail(end + L"the scene roots are missing");
        checkIndexes();
    }

private:
    [[noreturn]] void fail(const std::wstring& reason) { throw SceneFileError(label_, reason); }

    [[noreturn]] void damaged(std::size_t offset, const std::wstring& what) {
        fail(L"damaged at byte " + num(offset + scenefile::kHeaderSize) + L" " + section_ + L": " + what);
    }

    [[noreturn]] void streamError(const ChunkReader& r) {
        const ChunkError& e = r.LastError();
        if (e.truncated) fail(L"truncated at byte " + num(img_.bytes.size()) + L" " + section_);
        damaged(e.offset, MSTR::FromUTF8(e.what).str());
    }

    void once(bool& seen, const ChunkReader& r, const std::wstring& what) {
        if (seen) damaged(r.CurChunkOffset(), L"the file holds " + what);
        seen = true;
    }

    void checkHeader() {
        const auto& b = img_.bytes;
        const std::size_t magicSize = sizeof scenefile::kMagic;
        const std::size_t head = std::min(b.size(), magicSize);
        if (b.empty() || std::memcmp(b.data(), scenefile::kMagic, head) != 0) fail(L"not a scene file");
        if (b.size() < scenefile::kHeaderSize)
            fail(L"truncated at byte " + num(b.size()) + L" in the header");
        std::uint32_t version = 0;
        for (int k = 0; k < 4; ++k) version |= std::uint32_t(b[magicSize + std::size_t(k)]) << (8 * k);
        if (version != scenefile::kVersion)
            fail(L"unsupported scene file version " + std::to_wstring(version) + L" (this host reads version " +
                 std::to_wstring(scenefile::kVersion) + L")");
    }

    std::uint32_t readU32(ChunkReader& r) {
        std::uint8_t v[4] = {};
        ULONG n = 0;
        if (r.Read(v, 4, &n) != IO_OK) streamError(r);
        return std::uint32_t(v[0]) | (std::uint32_t(v[1]) << 8) | (std::uint32_t(v[2]) << 16) |
               (std::uint32_t(v[3]) << 24);
    }

    // u32 count, then one i32 per entry; the chunk must hold exactly that.
    std::vector<std::int32_t> readIndexTable(ChunkReader& r, const std::wstring& what) {
        const std::size_t at = r.CurChunkOffset();
        const std::uint64_t count = readU32(r);
        if (count * 4 != r.Remaining())
            damaged(at, what + L" says " + num(count) + L" entries but its chunk holds " + num(r.Remaining()) +
                            L" bytes for them");
        std::vector<std::int32_t> out;
        out.reserve(count);
        for (std::uint64_t i = 0; i < count; ++i) out.push_back(std::int32_t(readU32(r)));
        return out;
    }

    void readClasses(ChunkReader& r) {
        IOResult res;
        while ((res = r.OpenChunk()) == IO_OK) {
            if (r.CurChunkID() == scenefile::kClassEntry) {
                SceneClassRecord c;
                c.superClass = readU32(r);
                const std::uint32_t a = readU32(r);
                c.classId = Class_ID(a, readU32(r));
                MCHAR* name = nullptr;
                if (r.ReadWStringChunk(&name) != IO_OK) streamError(r);
                c.name = MSTR(name);
                img_.classes.push_back(std::move(c));
            }
            r.CloseChunk();
        }
        if (res == IO_ERROR) streamError(r);
    }

    void readObjects(ChunkReader& r) {
        IOResult res;
        while ((res = r.OpenChunk()) == IO_OK) {
            if (r.CurChunkID() == scenefile::kObject) readObject(r);
            r.CloseChunk();
        }
        if (res == IO_ERROR) streamError(r);
    }

    void readObject(ChunkReader& r) {
        const std::size_t index = img_.objects.size();
        const std::size_t at = r.CurChunkOffset();
        SceneObjectRecord rec;
        rec.offset = at + scenefile::kHeaderSize;
        bool haveClass = false, haveData = false, haveRefs = false;
        const std::wstring who = L"object " + num(index);
        IOResult res;
        while ((res = r.OpenChunk()) == IO_OK) {
            switch (r.CurChunkID()) {
            case scenefile::kObjectClass:
                once(haveClass, r, L"a second class index for " + who);
                rec.classIndex = readU32(r);
                break;
            case scenefile::kObjectData:
                once(haveData, r, L"a second data chunk for " + who);
                rec.dataOffset = r.Position() + scenefile::kHeaderSize;
                rec.dataSize = r.PayloadSize();
                if (r.CurChunkIsContainer()) checkNested(r);
                break;
            case scenefile::kObjectRefs:
                once(haveRefs, r, L"a second reference table for " + who);
                rec.refs = readIndexTable(r, L"the reference table of " + who);
                break;
            case scenefile::kObjectLinks:
                once(rec.hasLinks, r, L"a second link table for " + who);
                rec.links = readIndexTable(r, L"the link table of " + who);
                break;
            case scenefile::kObjectCustAttribs: rec.custAttribs = std::int32_t(readU32(r)); break;
            default: break;
            }
            r.CloseChunk();
        }
        if (res == IO_ERROR) streamError(r);
        if (!haveClass) damaged(at, who + L" has no class index");
        if (!haveData) damaged(at, who + L" has no data chunk");
        if (!haveRefs) damaged(at, who + L" has no reference table");
        img_.objects.push_back(std::move(rec));
    }

    // Walks every chunk nested in the open one, without recursion; leaves the open chunk open.
    void checkNested(ChunkReader& r) {
        int depth = 0;
        for (;;) {
            const IOResult res = r.OpenChunk();
            if (res == IO_ERROR) streamError(r);
            if (res == IO_OK) {
                if (r.CurChunkIsContainer())
                    ++depth;
                else
                    r.CloseChunk();
                continue;
            }
            if (depth == 0) return;
            r.CloseChunk();
            --depth;
        }
    }

    void checkIndexes() {
        section_ = L"in the object table";
        const std::size_t n = img_.objects.size();
        auto inRange = [n](std::int32_t v) { return v >= -1 && v < std::int64_t(n); };
        auto outOfRange = [&](const SceneObjectRecord& o, const std::wstring& what, std::int32_t v) {
            damaged(o.offset - scenefile::kHeaderSize,
                    what + L" refers to object " + std::to_wstring(v) + L", but the file holds " + num(n) +
                        L" objects");
        };
        std::vector<std::int32_t> caOwner(n, -1);
        for (std::size_t i = 0; i < n; ++i) {
            const SceneObjectRecord& o = img_.objects[i];
            const std::wstring who = L"object " + num(i);
            if (o.classIndex >= img_.classes.size())
                damaged(o.offset - scenefile::kHeaderSize,
                        who + L" uses class " + num(o.classIndex) + L", but the class directory holds " +
                            num(img_.classes.size()) + L" classes");
            for (std::int32_t v : o.refs)
                if (!inRange(v)) outOfRange(o, L"a reference of " + who, v);
            for (std::int32_t v : o.links)
                if (!inRange(v)) outOfRange(o, L"a link of " + who, v);
            if (o.custAttribs == -1) continue;
            if (!inRange(o.custAttribs)) outOfRange(o, L"the custom-attribute container of " + who, o.custAttribs);
            const auto c = std::size_t(o.custAttribs);
            if (c == i || caOwner[c] != -1)
                damaged(o.offset - scenefile::kHeaderSize,
                        L"the custom-attribute container of " + who + L" (object " + num(c) +
                            L") already belongs to " + (c == i ? who : L"object " + std::to_wstring(caOwner[c])));
            caOwner[c] = std::int32_t(i);
        }
        // The host's own container holds custom attributes only: its slots take nothing else.
        for (std::size_t i = 0; i < n; ++i) {
            const SceneObjectRecord& o = img_.objects[i];
            if (!isContainer(img_.ClassOf(i))) continue;
            for (std::int32_t v : o.refs)
                if (v >= 0 && img_.ClassOf(std::size_t(v)).superClass != CUST_ATTRIB_CLASS_ID)
                    damaged(o.offset - scenefile::kHeaderSize,
                            L"custom-attribute container object " + num(i) + L" holds object " + std::to_wstring(v) +
                                L", of " + DescribeSceneClass(img_.ClassOf(std::size_t(v))) +
                                L", which is no custom attribute");
        }
        for (std::size_t i = 0; i < n; ++i) {
            const SceneObjectRecord& o = img_.objects[i];
            if (o.custAttribs >= 0 && !isContainer(img_.ClassOf(std::size_t(o.custAttribs))))
                damaged(o.offset - scenefile::kHeaderSize,
                        L"the custom-attribute container of object " + num(i) + L" is of " +
                            DescribeSceneClass(img_.ClassOf(std::size_t(o.custAttribs))));
        }
        section_ = L"in the scene roots";
        for (std::int32_t v : img_.roots)
            if (!inRange(v))
                fail(L"damaged " + section_ + L": a root refers to object " + std::to_wstring(v) +
                     L", but the file holds " + num(n) + L" objects");
    }

    SceneImage& img_;
    const MSTR& label_;
    std::wstring section_ = L"in the header";
};

// Runs plug-in code, turning what it throws into an error that names the file and the object.
void guarded(const MSTR& label, const std::wstring& context, const std::function<void()>& fn) {
    try {
        fn();
    } catch (const SceneFileError&) {
        throw;
    } catch (const MAXException& ex) {
        throw SceneFileError(label, context + L": " + ex.message.str());
    } catch (const std::exception& ex) {
        throw SceneFileError(label, context + L": " + MSTR::FromUTF8(ex.what()).str());
    }
}

bool alive(ReferenceTarget* obj, AnimHandle h) { return obj && Animatable::GetAnimByHandle(h) == obj; }

}  // namespace

std::wstring DescribeSceneClass(const SceneClassRecord& c) {
    return L"class '" + c.name.str() + L"' (superclass " + hex(c.superClass) + L", class id (" +
           hex(c.classId.PartA()) + L", " + hex(c.classId.PartB()) + L"))";
}

SceneImage ParseSceneFile(std::vector<std::uint8_t> bytes, const MSTR& fileLabel) {
    SceneImage image;
    image.bytes = std::move(bytes);
    Parser(image, fileLabel).Run();
    return image;
}

void CheckSceneClasses(const SceneImage& image, const MSTR& fileLabel) {
    for (std::size_t i = 0; i < image.objects.size(); ++i) {
        const SceneClassRecord& c = image.ClassOf(i);
        if (!ClassDirectory::Instance().Find(c.superClass, c.classId))
            throw SceneFileError(fileLabel, L"unknown " + DescribeSceneClass(c) + L", needed by object " + num(i));
    }
}

void DestroySceneObjects(const LoadedScene& scene) {
    // Owners go first: they take their custom-attribute containers with them.
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < scene.objects.size(); ++i)
        if (alive(scene.objects[i], scene.handles[i]) && scene.objects[i]->GetCustAttribContainer()) order.push_back(i);
    for (std::size_t i = 0; i < scene.objects.size(); ++i)
        if (std::find(order.begin(), order.end(), i) == order.end()) order.push_back(i);
    RefMessagesOffScope messagesOff;
    HoldSuspendedScope suspended;
    for (std::size_t i : order)
        if (alive(scene.objects[i], scene.handles[i])) scene.objects[i]->DeleteMe();
}

LoadedScene InstantiateScene(const SceneImage& image, const MSTR& fileLabel) {
    CheckSceneClasses(image, fileLabel);
    const std::size_t n = image.objects.size();
    LoadedScene out;
    out.objects.reserve(n);
    out.handles.reserve(n);
    std::vector<std::unique_ptr<ChunkReader>> readers;
    auto who = [&](std::size_t i) { return L"object " + num(i) + L" (" + DescribeSceneClass(image.ClassOf(i)) + L")"; };
    auto objectAt = [&](std::int32_t index) -> ReferenceTarget* {
        return index >= 0 && std::size_t(index) < out.objects.size() ? out.objects[std::size_t(index)] : nullptr;
    };

    try {
        HoldSuspendedScope suspended;  // loading is no undoable edit
        for (std::size_t i = 0; i < n; ++i) {
            const SceneClassRecord& c = image.ClassOf(i);
            void* made = nullptr;
            guarded(fileLabel, L"cannot create " + who(i),
                    [&] { made = ClassDirectory::Instance().Create(c.superClass, c.classId, true); });
            if (!made) throw SceneFileError(fileLabel, L"the descriptor of " + who(i) + L" created nothing");
            auto* anim = static_cast<Animatable*>(made);
            auto* obj = dynamic_cast<ReferenceTarget*>(anim);
            if (!obj) {
                anim->DeleteThis();
                throw SceneFileError(fileLabel, who(i) + L" is not a reference target");
            }
            out.objects.push_back(obj);
            out.handles.push_back(Animatable::GetHandleByAnim(obj));
        }
        for (std::size_t i = 0; i < n; ++i) {
            const std::int32_t c = image.objects[i].custAttribs;
            if (c >= 0 && !dynamic_cast<ICustAttribContainer*>(objectAt(c)))
                throw SceneFileError(fileLabel, L"the custom-attribute container of object " + num(i) + L" is " +
                                                    who(std::size_t(c)) + L", not a container");
        }

        for (std::size_t i = 0; i < n; ++i) {
            const SceneObjectRecord& rec = image.objects[i];
            readers.push_back(std::make_unique<ChunkReader>(image.bytes.data() + rec.dataOffset, rec.dataSize));
            ChunkReader& reader = *readers.back();
            reader.SetObjectLookup([&](int index) -> void* { return objectAt(index); });
            IOResult res = IO_OK;
            guarded(fileLabel, who(i) + L" failed to load", [&] { res = out.objects[i]->Load(&reader); });
            if (res == IO_ERROR) throw SceneFileError(fileLabel, who(i) + L" failed to load");
        }

        for (std::size_t i = 0; i < n; ++i) {
            ReferenceTarget* obj = out.objects[i];
            const auto& refs = image.objects[i].refs;
            guarded(fileLabel, L"cannot restore the references of " + who(i), [&] {
                const std::size_t count = std::min(refs.size(), std::size_t(std::max(obj->NumRefs(), 0)));
                for (std::size_t k = 0; k < count; ++k) {
                    ReferenceTarget* target = objectAt(refs[k]);
                    if (!target) continue;
                    ReferenceTarget* before = obj->GetReference(int(k));
                    RestoreReference(obj, int(k), target);
                    // Whatever the object made for itself in that slot is released, unless the file holds it.
                    if (before && before != target &&
                        std::find(out.objects.begin(), out.objects.end(), before) == out.objects.end())
                        before->MaybeAutoDelete();
                }
            });
        }

        for (std::size_t i = 0; i < n; ++i) {
            ReferenceTarget* obj = out.objects[i];
            const SceneObjectRecord& rec = image.objects[i];
            if (auto* links = dynamic_cast<ISceneLinks*>(obj); links && rec.hasLinks) {
                guarded(fileLabel, L"cannot restore the links of " + who(i), [&] {
                    const std::size_t count = std::min(rec.links.size(), std::size_t(std::max(links->NumLinks(), 0)));
                    for (std::size_t k = 0; k < count; ++k)
                        if (ReferenceTarget* target = objectAt(rec.links[k])) links->SetLink(int(k), target);
                });
            }
            if (rec.custAttribs >= 0)
                obj->SetCustAttribContainer(static_cast<ICustAttribContainer*>(objectAt(rec.custAttribs)));
        }

        for (std::size_t i = 0; i < n; ++i) {
            ChunkReader& reader = *readers[i];
            guarded(fileLabel, L"a post-load step of " + who(i) + L" failed", [&] {
                for (std::size_t k = 0; k < reader.PostLoadCallbacks().size(); ++k)
                    reader.PostLoadCallbacks()[k]->proc(&reader);
            });
        }
    } catch (...) {
        DestroySceneObjects(out);
        throw;
    }

    for (std::int32_t r : image.roots) out.roots.push_back(objectAt(r));
    return out;
}

}  // namespace hostrt
