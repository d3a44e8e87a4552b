#include "helper/save_state.h"

namespace vandrels {

SaveState& GetSaveState() {
    static SaveState state;
    return state;
}

}  // namespace vandrels
