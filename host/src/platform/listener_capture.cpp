// The listener's captured text and the listener functions plug-ins print with (mprintf, mputs, mflush).
#include "platform/listener_capture.h"

#include "listener.h"
#include "strclass.h"

#include <cstdarg>
#include <cstdio>

namespace hostrt {

Listener& Listener::Instance() {
    static Listener listener;
    return listener;
}

void Listener::Write(std::wstring_view text) {
    if (text.empty()) return;
    std::vector<Observer> observers;
    {
        std::lock_guard lock(mutex_);
        text_ += text;
        if (echo_) {
            const std::string utf8 = MaxSDK::ToUTF8(text);
            std::fwrite(utf8.data(), 1, utf8.size(), stdout);
        }
        for (const auto& entry : observers_) observers.push_back(entry.second);
    }
    // Outside the lock: an observer may print or read the listener itself.
    for (const Observer& observer : observers) observer(text);
}

void Listener::Flush() {
    std::lock_guard lock(mutex_);
    ++flushes_;
    if (echo_) std::fflush(stdout);
}

std::wstring Listener::Text() const {
    std::lock_guard lock(mutex_);
    return text_;
}

std::vector<std::wstring> Listener::Lines() const {
    const std::wstring text = Text();
    std::vector<std::wstring> lines;
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find(L'\n', start);
        if (end == std::wstring::npos) end = text.size();
        lines.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

void Listener::Clear() {
    std::lock_guard lock(mutex_);
    text_.clear();
}

int Listener::FlushCount() const {
    std::lock_guard lock(mutex_);
    return flushes_;
}

void Listener::SetEcho(bool on) {
    std::lock_guard lock(mutex_);
    echo_ = on;
}

bool Listener::Echo() const {
    std::lock_guard lock(mutex_);
    return echo_;
}

int Listener::AddObserver(Observer observer) {
    std::lock_guard lock(mutex_);
    observers_.emplace_back(nextKey_, std::move(observer));
    return nextKey_++;
}

void Listener::RemoveObserver(int key) {
    std::lock_guard lock(mutex_);
    std::erase_if(observers_, [key](const auto& entry) { return entry.first == key; });
}

void Listener::Reset() {
    std::lock_guard lock(mutex_);
    text_.clear();
    flushes_ = 0;
    echo_ = false;
    observers_.clear();
}

}  // namespace hostrt

void mprintf(const MCHAR* format, ...) {
    va_list args;
    va_start(args, format);
    const std::wstring text = MaxSDK::FormatV(format, args);
    va_end(args);
    hostrt::Listener::Instance().Write(text);
}

void mputs(const MCHAR* text) {
    if (text) hostrt::Listener::Instance().Write(text);
}

void mflush() { hostrt::Listener::Instance().Flush(); }
