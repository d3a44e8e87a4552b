// The main window handle and the registry of fake top-level windows.
#include "platform/windows.h"

namespace hostrt {

WindowRegistry& WindowRegistry::Instance() {
    static WindowRegistry registry;
    return registry;
}

HWND WindowRegistry::MainWindow() const {
    static int mainWindow = 0;
    return &mainWindow;
}

HWND WindowRegistry::AddWindow(std::wstring title, std::wstring className) {
    windows_.push_back(std::make_unique<Window>(Window{std::move(title), std::move(className)}));
    return windows_.back().get();
}

HWND WindowRegistry::Find(const wchar_t* className, const wchar_t* title) const {
    for (const auto& w : windows_)
        if (w->open && (!className || w->className == className) && (!title || w->title == title)) return w.get();
    return nullptr;
}

WindowRegistry::Window* WindowRegistry::open(HWND hwnd) const {
    for (const auto& w : windows_)
        if (w.get() == hwnd && w->open) return w.get();
    return nullptr;
}

bool WindowRegistry::Exists(HWND hwnd) const { return open(hwnd) != nullptr; }

std::wstring WindowRegistry::Title(HWND hwnd) const {
    const Window* w = open(hwnd);
    return w ? w->title : std::wstring();
}

bool WindowRegistry::Destroy(HWND hwnd) {
    Window* w = open(hwnd);
    if (!w) return false;
    w->open = false;
    destroyed_.push_back(w->title);
    return true;
}

std::vector<std::wstring> WindowRegistry::OpenTitles() const {
    std::vector<std::wstring> titles;
    for (const auto& w : windows_)
        if (w->open) titles.push_back(w->title);
    return titles;
}

void WindowRegistry::Reset() {
    for (const auto& w : windows_) w->open = false;
    destroyed_.clear();
}

}  // namespace hostrt
