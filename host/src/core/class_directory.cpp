// The class directory and the descriptor-level entry points (CreateInstance, FindClassDesc).
#include "class_directory.h"

#include <algorithm>

namespace hostrt {

ClassDirectory& ClassDirectory::Instance() {
    static auto* dir = new ClassDirectory();  // descriptors of unloaded libraries may still be asked at exit
    return *dir;
}

bool ClassDirectory::Register(ClassDesc* desc, const std::string& library) {
    if (!desc) return false;
    if (Find(desc->SuperClassID(), desc->ClassID())) return false;
    entries_.push_back(ClassEntry{desc, library});
    return true;
}

void ClassDirectory::UnregisterLibrary(const std::string& library) {
    entries_.erase(std::remove_if(entries_.begin(), entries_.end(),
                                  [&](const ClassEntry& e) { return e.library == library; }),
                   entries_.end());
}

ClassDesc* ClassDirectory::Find(SClass_ID superID, Class_ID classID) const {
    for (const auto& e : entries_)
        if (e.desc->SuperClassID() == superID && e.desc->ClassID() == classID) return e.desc;
    return nullptr;
}

void* ClassDirectory::Create(SClass_ID superID, Class_ID classID, bool loading) const {
    ClassDesc* d = Find(superID, classID);
    return d ? d->Create(loading ? TRUE : FALSE) : nullptr;
}

}  // namespace hostrt

ClassDesc::~ClassDesc() = default;

void* CreateInstance(SClass_ID superID, Class_ID classID) {
    return hostrt::ClassDirectory::Instance().Create(superID, classID, false);
}

ClassDesc* FindClassDesc(SClass_ID superID, Class_ID classID) {
    return hostrt::ClassDirectory::Instance().Find(superID, classID);
}
