// The error frame's texts: a failure's fields composed into the exact text the reports and rethrown failures
// carry, and the frame that turns exceptions into failures.
#include "frame/record_failure.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using vandrels::RecordFailure;

std::wstring Text(const RecordFailure& failure) { return failure.ToString().data(); }

TEST(RecordFailure, ComposesEachPresentFieldOnItsOwnLine) {
    const MAXException cause(L"the controller failed");
    EXPECT_EQ(Text({L"Error Collecting RefNode", MSTR(L"Name: Box01"), MSTR(L"Collect Modifiers"),
                    RecordFailure::CauseOf(&cause)}),
              L"Error Collecting RefNode\nName: Box01\nLastOperation: Collect Modifiers\n\nthe controller failed");
    // A material record's failure: no step; an unknown cause: no cause.
    EXPECT_EQ(Text({L"Unknown Error Creating RefMaterial", MSTR(L"Paint"), std::nullopt,
                    RecordFailure::CauseOf(nullptr)}),
              L"Unknown Error Creating RefMaterial\nPaint");
    // A merge before its first step still writes the step label.
    EXPECT_EQ(Text({L"Error Merging File", std::nullopt, MSTR(), MSTR(L"damaged")}),
              L"Error Merging File\nLastOperation: \n\ndamaged");
    // The scene-wide report labels its step with a space.
    EXPECT_EQ(Text({L"Error Saving Reference", std::nullopt, MSTR(L"Writing"), std::nullopt,
                    RecordFailure::StepLabel::Spaced}),
              L"Error Saving Reference\nLast Operation: Writing");
    // The scene save's reports put the cause right after the words and the step line last.
    RecordFailure save{L"Error Saving Scene in PreSave", std::nullopt, MSTR(L"Linking"), MSTR(L"failed"),
                       RecordFailure::StepLabel::Spaced};
    save.causePlace = RecordFailure::CausePlace::BeforeStep;
    EXPECT_EQ(Text(save), L"Error Saving Scene in PreSave\n\nfailed\nLast Operation: Linking");
    save.cause.reset();
    EXPECT_EQ(Text(save), L"Error Saving Scene in PreSave\nLast Operation: Linking");
    EXPECT_FALSE(RecordFailure::StepOf(0).has_value());
}

TEST(RecordFailure, TheFrameNamesHostExceptionsAndUnknownOnesApart) {
    std::wstring words, cause;
    auto fail = [&](const MCHAR* failed, const MAXException* e) {
        words = failed;
        cause = e ? e->message.data() : L"(none)";
    };
    vandrels::RunInErrorFrame(L"Error X", L"Unknown Error X", [] { throw MAXException(L"bad"); }, fail);
    EXPECT_EQ(words, L"Error X");
    EXPECT_EQ(cause, L"bad");
    vandrels::RunInErrorFrame(L"Error X", L"Unknown Error X", [] { throw 7; }, fail);
    EXPECT_EQ(words, L"Unknown Error X");
    EXPECT_EQ(cause, L"(none)");
    words.clear();
    vandrels::RunInErrorFrame(L"Error X", L"Unknown Error X", [] {}, fail);
    EXPECT_EQ(words, L"");
}

}  // namespace
