// SceneFileError: the failure of reading or writing a scene file, naming the file and what is wrong.
#pragma once

#include "maxexception.h"

#include <string>

namespace hostrt {

class SceneFileError : public MAXException {
public:
    // The message reads "<file>: <reason>".
    SceneFileError(const MSTR& file, const MSTR& reason)
        : MAXException(file + L": " + reason), file_(file), reason_(reason) {}
    const MSTR& File() const { return file_; }
    const MSTR& Reason() const { return reason_; }

private:
    MSTR file_;
    MSTR reason_;
};

}  // namespace hostrt
