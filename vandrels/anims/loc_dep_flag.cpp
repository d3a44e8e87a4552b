// The local-dependency test of the animatable records: is an animatable used by scene content that does not
// come from a reference?
#include "anims/loc_dep_flag.h"

#include "anims/ref_anim.h"
#include "records/scene_utils.h"

namespace {

// Classes of the scene-material holder's entries that count as local users.
bool IsSceneMaterialClass(const Class_ID& cid) {
    return cid == Class_ID(0x00000C80, 0) || cid == Class_ID(0xEE448B23, 0) ||
           cid == Class_ID(0x8D73B8AA, 0x90F2EE71) || cid == Class_ID(0x17356912, 0);
}

const Class_ID kSceneMaterialHolder(0x00002222, 0);
const Class_ID kSkippedDependent(0x55293BB4, 0x4AD13DAD);

}  // namespace

void RefAnim::AttachLocDepFlag(Animatable* anim, LocDepFlag* flag) { anim->AddAProp(flag); }

LocDepFlag* RefAnim::FindLocDepFlag(Animatable* anim) {
    return static_cast<LocDepFlag*>(anim->GetAProp(LOCDEPFLAG_PROPERTY_ID));
}

bool RefAnim::IsLocDep(Animatable* anim) {
    auto* target = dynamic_cast<ReferenceTarget*>(anim);
    if (!target) return false;
    const DWORD stamp = GetPassStamp();
    LocDepFlag* flag = FindLocDepFlag(anim);
    if (!flag) {
        flag = new LocDepFlag(stamp);
        AttachLocDepFlag(anim, flag);
    } else if (flag->stamp == stamp) {
        return flag->result != 0;
    } else {
        flag->stamp = stamp;
    }
    // The flag answers "not local" while its own walk runs, which ends cycles of dependents.
    flag->result = 0;
    int result = 0;
    DependentIterator it(target);
    while (ReferenceMaker* dep = it.Next()) {
        const SClass_ID sclass = dep->SuperClassID();
        if (sclass == BASENODE_CLASS_ID) {
            if (!FindNodeRecord(static_cast<INode*>(dep))) result = 1;
        } else if (sclass == REFANIM_SUPER_CLASS_ID || sclass == REFBASE_SUPER_CLASS_ID) {
            if (dep->IsRealDependency(target)) result = 1;
        } else if (sclass == 0x0100 && dep->ClassID() == kSceneMaterialHolder &&
                   IsSceneMaterialClass(anim->ClassID())) {
            result = 1;
        } else if (dep->ClassID() != kSkippedDependent) {
            // the dependents that report an owner of their own (0x5DDB3626, 0x23B708DB) arrive with that host class
            if (IsLocDep(dep)) result = 1;
        }
        if (result) break;
    }
    // The walk may have replaced the flag's owner's property list; look the flag up again.
    if (LocDepFlag* again = FindLocDepFlag(anim)) again->result = result;
    return result != 0;
}
