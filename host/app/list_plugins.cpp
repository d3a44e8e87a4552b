// `maxhost plugins`: the host's plug-in manager listing, one line per library and one per class.
#include "commands.h"
#include "core/plugin_manager.h"

namespace maxhost {

int ListPlugins(std::FILE* out) {
    const auto& pm = hostrt::PluginManager::Instance();
    std::fprintf(out, "%zu plug-in librar%s loaded\n", pm.Libraries().size(), pm.Libraries().size() == 1 ? "y" : "ies");
    for (const auto& lib : pm.Libraries()) {
        std::fprintf(out, "%s  \"%s\"  version 0x%08X  %zu classes\n", lib.file.c_str(), lib.description.ToUTF8().c_str(),
                     lib.version, lib.classes.size());
        int index = 0;
        for (ClassDesc* cd : lib.classes) {
            const Class_ID id = cd->ClassID();
            const MCHAR* category = cd->Category();
            std::fprintf(out, "  %2d  %-24s superclass 0x%08X  class (0x%08X, 0x%08X)  category \"%s\"  %s\n", index++,
                         WStr(cd->ClassName()).ToUTF8().c_str(), cd->SuperClassID(), id.PartA(), id.PartB(),
                         WStr(category ? category : L"").ToUTF8().c_str(), cd->IsPublic() ? "public" : "not public");
        }
    }
    for (const auto& p : pm.Problems()) std::fprintf(out, "skipped: %s\n", p.c_str());
    return 0;
}

}  // namespace maxhost
