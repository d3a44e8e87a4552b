// The base of every class descriptor of the library: not public, named from the string table, category
// "Vandrels", the library's instance handle. A concrete descriptor adds only what it creates.
#pragma once

#include "iparamb2.h"
#include "plugapi.h"

class VandrelsClassDesc : public ClassDesc2 {
public:
    // nameId: the string holding the class name; scriptName: the same name as a fixed literal.
    VandrelsClassDesc(int nameId, const MCHAR* scriptName, SClass_ID superClassId, Class_ID classId);

    int IsPublic() override { return FALSE; }
    const MCHAR* ClassName() override;
    const MCHAR* NonLocalizedClassName() override { return scriptName_; }
    const MCHAR* InternalName() override { return scriptName_; }
    SClass_ID SuperClassID() override { return superClassId_; }
    Class_ID ClassID() override { return classId_; }
    const MCHAR* Category() override;
    HINSTANCE HInstance() override;

private:
    int nameId_;
    const MCHAR* scriptName_;
    SClass_ID superClassId_;
    Class_ID classId_;
    MSTR name_;
    MSTR category_;
};

// A descriptor that makes a new T, ignoring the loading flag.
template <class T> class SimpleClassDesc : public VandrelsClassDesc {
public:
    using VandrelsClassDesc::VandrelsClassDesc;
    void* Create(BOOL) override { return new T(); }
};
