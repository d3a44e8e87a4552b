// hostrt::Listener: the MAXScript listener's text. Everything printed to it is kept (tests and users read it
// back), optionally echoed to standard output, and handed to observers as it arrives.
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace hostrt {

class Listener {
public:
    static Listener& Instance();

    // Appends text (printed through mprintf, mputs or a script).
    void Write(std::wstring_view text);
    void Flush();

    // Everything written since the start or the last Clear.
    std::wstring Text() const;
    // Text split at line breaks; a last line without its break is included.
    std::vector<std::wstring> Lines() const;
    void Clear();
    int FlushCount() const;

    // Echo to standard output (as UTF-8); off unless the application turns it on.
    void SetEcho(bool on);
    bool Echo() const;

    // Observers hear every piece of text as it is written; answers a key for RemoveObserver.
    using Observer = std::function<void(std::wstring_view text)>;
    int AddObserver(Observer observer);
    void RemoveObserver(int key);

    // Back to the start state: no text, no echo, no observers.
    void Reset();

private:
    Listener() = default;
    mutable std::mutex mutex_;
    std::wstring text_;
    int flushes_ = 0;
    bool echo_ = false;
    int nextKey_ = 1;
    std::vector<std::pair<int, Observer>> observers_;
};

}  // namespace hostrt
