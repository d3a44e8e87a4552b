// A failed operation of a record, a helper or one of its steps, as a value: the operation's words ("Error
// Collecting RefNode"), what failed (the record's or the helper's description), the step word in force and the
// text of the exception that caused it. ToString composes the one text the user sees from these fields; every
// record, helper, merge and layer failure is reported or thrown on through it.
#pragma once

#include "maxexception.h"
#include "strclass.h"

#include <optional>

namespace vandrels {

struct RecordFailure {
    // How the step line is labelled: the records and the helper's operations write "LastOperation: ", the
    // error report of the scene-wide operations (save, batch) "Last Operation: ".
    enum class StepLabel { Joined, Spaced };
    // Where the cause goes: after the step line (records, helper operations), or right after the words with the
    // step line last (the scene save's pre-save and post-save reports).
    enum class CausePlace { AfterStep, BeforeStep };

    MSTR operation;                    // the operation's words
    std::optional<MSTR> description;   // what failed, on the line after the words
    std::optional<MSTR> step;          // the step word in force; an empty word still prints the label
    std::optional<MSTR> cause;         // the caught host exception's text, after an empty line
    StepLabel stepLabel = StepLabel::Joined;
    CausePlace causePlace = CausePlace::AfterStep;

    // words, "\n" description, "\nLastOperation: " step, "\n\n" cause: each part only when present (the cause
    // before the step line with CausePlace::BeforeStep).
    MSTR ToString() const;
    // Throws the composed text on as a host exception.
    [[noreturn]] void Throw() const;

    // The step word of a string-table id; none for 0.
    static std::optional<MSTR> StepOf(int stringId);
    // The text of a caught host exception; none without one.
    static std::optional<MSTR> CauseOf(const MAXException* cause);
};

// Runs op inside an error frame: a host exception calls fail(words, &exception), anything else
// fail(unknownWords, nullptr). fail is expected to throw the failure on.
template <class Op, class Fail>
void RunInErrorFrame(const MCHAR* words, const MCHAR* unknownWords, Op&& op, Fail&& fail) {
    try {
        op();
    } catch (const MAXException& e) {
        fail(words, &e);
    } catch (...) {
        fail(unknownWords, nullptr);
    }
}

}  // namespace vandrels
