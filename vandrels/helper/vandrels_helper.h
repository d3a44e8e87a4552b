// The reference helper: the scene object that stands for one reference file.
#pragma once

#include "frame/class_ids.h"
#include "object.h"

class VandrelsHelper : public HelperObject {
public:
    explicit VandrelsHelper(BOOL loading = FALSE);
    Class_ID ClassID() override { return VANDRELS_HELPER_CLASS_ID; }
    void GetClassName(MSTR& s, bool localized = true) const override { s = L"VandrelsHelper"; }
};
