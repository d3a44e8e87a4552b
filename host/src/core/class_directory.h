// The host's class directory: every class descriptor the host knows, its own built-in classes and those of
// the plug-in libraries, looked up by (superclass, class id).
#pragma once

#include "plugapi.h"

#include <string>
#include <vector>

namespace hostrt {

struct ClassEntry {
    ClassDesc* desc = nullptr;
    std::string library;  // file name of the plug-in library, "(host)" for built-in classes
};

class ClassDirectory {
public:
    static ClassDirectory& Instance();

    // Adds a descriptor; a second descriptor for the same (superclass, class id) is refused (answers false).
    bool Register(ClassDesc* desc, const std::string& library = "(host)");
    // Removes every descriptor of a library (used when a library is unloaded).
    void UnregisterLibrary(const std::string& library);
    ClassDesc* Find(SClass_ID superID, Class_ID classID) const;
    // Creates an instance through the descriptor; null when the class is unknown.
    void* Create(SClass_ID superID, Class_ID classID, bool loading) const;
    const std::vector<ClassEntry>& Entries() const { return entries_; }

private:
    std::vector<ClassEntry> entries_;
};

// Registers the host's own classes (custom-attribute container, ...). Idempotent.
void RegisterBuiltinClasses();

}  // namespace hostrt
