// Text streams of MAXScript: what `format ... to:` and `print ... to:` write into. A string stream keeps its text
// in memory; a file stream (openFile, createFile) reads and writes a file on disk.
#pragma once

#include "maxscript/value.h"

#include <string>

namespace hostrt::mxs {

class TextStream : public ExtObject {
public:
    // Appends text; a stream that cannot take it throws the script error saying why.
    virtual void Write(const std::wstring& text) = 0;
};

// The stream a `to:` keyword names; null when the call has none (then the listener is meant). Throws the
// conversion error when the keyword holds something else.
TextStream* TargetStream(const CallArgs& args);

}  // namespace hostrt::mxs
