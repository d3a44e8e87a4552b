// The prompt stack and the timed temporary prompt.
#include "platform/prompt_line.h"

namespace hostrt {

PromptLine& PromptLine::Instance() {
    static PromptLine line;
    return line;
}

void PromptLine::Push(std::wstring text) { stack_.push_back(std::move(text)); }

void PromptLine::Pop() {
    if (!stack_.empty()) stack_.pop_back();
}

void PromptLine::Replace(std::wstring text) {
    if (stack_.empty()) stack_.push_back(std::move(text));
    else stack_.back() = std::move(text);
}

void PromptLine::ShowTemp(std::wstring text, int msec) {
    lastTempText_ = std::move(text);
    lastTempMsec_ = msec;
    ++tempCount_;
    tempShown_ = true;
    tempUntil_ = Clock::now() + std::chrono::milliseconds(msec < 0 ? 0 : msec);
}

void PromptLine::RemoveTemp() { tempShown_ = false; }

std::wstring PromptLine::Current() const {
    if (tempShown_ && Clock::now() < tempUntil_) return lastTempText_;
    return stack_.empty() ? std::wstring() : stack_.back();
}

void PromptLine::Reset() { *this = PromptLine(); }

}  // namespace hostrt
