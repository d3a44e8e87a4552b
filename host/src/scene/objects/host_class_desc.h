// HostClassDesc: the class descriptor of a host scene class T, made through T(bool loading).
#pragma once

#include "plugapi.h"

namespace hostrt {

// The fixed identity every host class descriptor answers with.
class NamedClassDesc : public ClassDesc2 {
public:
    NamedClassDesc(const MCHAR* name, SClass_ID superClass, Class_ID classId, const MCHAR* category)
        : name_(name), super_(superClass), id_(classId), category_(category) {}
    int IsPublic() override { return TRUE; }
    const MCHAR* ClassName() override { return name_; }
    SClass_ID SuperClassID() override { return super_; }
    Class_ID ClassID() override { return id_; }
    const MCHAR* Category() override { return category_; }
    const MCHAR* InternalName() override { return name_; }

private:
    const MCHAR* name_;
    SClass_ID super_;
    Class_ID id_;
    const MCHAR* category_;
};

template <class T> class HostClassDesc : public NamedClassDesc {
public:
    HostClassDesc(const MCHAR* name, SClass_ID superClass, Class_ID classId, const MCHAR* category = L"Standard")
        : NamedClassDesc(name, superClass, classId, category) {}
    void* Create(BOOL loading) override { return static_cast<Animatable*>(new T(loading != FALSE)); }
};

}  // namespace hostrt
