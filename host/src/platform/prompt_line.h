// hostrt::PromptLine: the status prompt of the host's main window: a stack of prompts and a temporary
// prompt shown over it for a while. Tests read what it shows.
#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace hostrt {

class PromptLine {
public:
    static PromptLine& Instance();

    void Push(std::wstring text);
    // Removes the top prompt (nothing happens when the stack is empty).
    void Pop();
    // Replaces the top prompt; pushes one when the stack is empty.
    void Replace(std::wstring text);
    void ShowTemp(std::wstring text, int msec);
    void RemoveTemp();

    // What the prompt line shows now: the temporary prompt while it lasts, else the top prompt, else "".
    std::wstring Current() const;
    const std::vector<std::wstring>& Stack() const { return stack_; }
    // The last temporary prompt asked for and its duration in milliseconds (even once it has gone).
    const std::wstring& LastTempText() const { return lastTempText_; }
    int LastTempDuration() const { return lastTempMsec_; }
    int TempCount() const { return tempCount_; }

    void Reset();

private:
    PromptLine() = default;
    using Clock = std::chrono::steady_clock;
    std::vector<std::wstring> stack_;
    bool tempShown_ = false;
    Clock::time_point tempUntil_{};
    std::wstring lastTempText_;
    int lastTempMsec_ = 0;
    int tempCount_ = 0;
};

}  // namespace hostrt
