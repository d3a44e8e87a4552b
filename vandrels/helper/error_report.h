// The "Reference Error" report: one modal dialog that shows what went wrong in a reference operation. Nothing is
// shown in the host's quiet mode.
#pragma once

#include "strclass.h"

class MAXException;

namespace vandrels {

struct RecordFailure;

// Shows the failure's composed text.
void ReportError(const RecordFailure& failure);

// Shows message; with a last-operation word (a string-table id, 0 for none) a line break, "Last Operation: " and
// the word are appended, with a caught host exception two line breaks and its text.
void ReportError(const MSTR& message, int lastOperationId = 0, const MAXException* cause = nullptr);

// The text of the last report (kept even in quiet mode).
const MSTR& LastErrorReport();

}  // namespace vandrels
