// The host exception: a message and a code. Every failure the host raises (out-of-range indexing of Tab and
// MaxSDK::Array included) is a MAXException, so one catch clause sees them all.
#pragma once

#include "strclass.h"

#include <exception>
#include <string>

class MAXException : public std::exception {
public:
    MAXException() = default;
    explicit MAXException(const MSTR& msg, int code = 0) : message(msg), error(code), narrow_(msg.ToUTF8()) {}
    explicit MAXException(const MCHAR* msg, int code = 0) : MAXException(MSTR(msg), code) {}
    const char* what() const noexcept override { return narrow_.c_str(); }

    MSTR message;
    int error = 0;

private:
    std::string narrow_;
};

namespace MaxSDK::Util {
// Raised by Tab and MaxSDK::Array for an index outside the array.
class OutOfRangeException : public MAXException {
public:
    using MAXException::MAXException;
};
}  // namespace MaxSDK::Util
