#include "records/ref_sub_anim.h"

RefSubAnim::~RefSubAnim() {
    for (RefSubAnim* child : children) delete child;
    for (WStr* name : names) delete name;
}
