// `maxhost demo`: a short demonstration of the host runtime.
#include "commands.h"

#include "max.h"

namespace maxhost {

int RunDemo(std::FILE* out) {
    std::fprintf(out, "maxhost demo\n");
    return 0;
}

}  // namespace maxhost
