// hostrt::WindowRegistry: the host's main window and the fake top-level windows that FindWindowW and
// DestroyWindow see (none unless a test or the host adds them).
#pragma once

#include "maxtypes.h"

#include <memory>
#include <string>
#include <vector>

namespace hostrt {

class WindowRegistry {
public:
    static WindowRegistry& Instance();

    // The main window handle: never null, never in the list of top-level windows, never destroyed.
    HWND MainWindow() const;

    // Adds a top-level window and answers its handle.
    HWND AddWindow(std::wstring title, std::wstring className = L"");
    // The first window (in order of adding) whose class and title match; a null text matches any.
    HWND Find(const wchar_t* className, const wchar_t* title) const;
    bool Exists(HWND hwnd) const;
    std::wstring Title(HWND hwnd) const;
    // Removes the window; false for an unknown handle.
    bool Destroy(HWND hwnd);

    // Titles of the windows that are open, and of those destroyed, in order.
    std::vector<std::wstring> OpenTitles() const;
    const std::vector<std::wstring>& DestroyedTitles() const { return destroyed_; }

    void Reset();

private:
    WindowRegistry() = default;
    struct Window {
        std::wstring title;
        std::wstring className;
        bool open = true;  // destroyed windows stay allocated so that their handles are never reused
    };
    Window* open(HWND hwnd) const;
    std::vector<std::unique_ptr<Window>> windows_;
    std::vector<std::wstring> destroyed_;
};

}  // namespace hostrt
