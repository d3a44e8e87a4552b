#include "frame/record_failure.h"

#include "frame/module.h"
#include "maxexception.h"

namespace vandrels {

MSTR RecordFailure::ToString() const {
    MSTR text = operation;
    if (description) text += L"\n" + *description;
    const bool causeFirst = causePlace == CausePlace::BeforeStep;
    if (cause && causeFirst) text += L"\n\n" + *cause;
    if (step) text += MSTR(stepLabel == StepLabel::Joined ? L"\nLastOperation: " : L"\nLast Operation: ") + *step;
    if (cause && !causeFirst) text += L"\n\n" + *cause;
    return text;
}

void RecordFailure::Throw() const { throw MAXException(ToString(), 0); }

std::optional<MSTR> RecordFailure::StepOf(int stringId) {
    if (!stringId) return std::nullopt;
    return GetStringCopy(stringId);
}

std::optional<MSTR> RecordFailure::CauseOf(const MAXException* cause) {
    if (!cause) return std::nullopt;
    return cause->message;
}

}  // namespace vandrels
