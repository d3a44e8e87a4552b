// `maxhost run FILE.ms`, `maxhost eval "TEXT"` and the interactive listener (maxhost without a command).
#include "commands.h"

#include "maxscript/interpreter.h"
#include "maxscript/parser.h"
#include "maxscript/print.h"
#include "platform/listener_capture.h"
#include "strclass.h"

#include <fstream>
#include <iterator>
#include <unistd.h>

namespace maxhost {

namespace {

namespace mxs = hostrt::mxs;

void Put(std::FILE* f, const std::wstring& text) {
    const std::string utf8 = MaxSDK::ToUTF8(text);
    std::fwrite(utf8.data(), 1, utf8.size(), f);
    std::fflush(f);
}

// A script file's text: UTF-8 (with or without its byte-order mark) or UTF-16LE with its mark.
bool ReadScript(const std::string& path, std::wstring& text, std::string& problem) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        problem = "cannot open " + path;
        return false;
    }
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (bytes.size() >= 2 && (unsigned char)bytes[0] == 0xFF && (unsigned char)bytes[1] == 0xFE) {
        text.clear();
        for (std::size_t i = 2; i + 1 < bytes.size(); i += 2)
            text += wchar_t((unsigned char)bytes[i] | ((unsigned char)bytes[i + 1] << 8));
        return true;
    }
    const bool bom = bytes.size() >= 3 && bytes.compare(0, 3, "\xEF\xBB\xBF") == 0;
    text = MaxSDK::FromUTF8(std::string_view(bytes).substr(bom ? 3 : 0));
    return true;
}

// Runs a script text headless: the listener echoes to standard output, an error goes to standard error.
int RunText(const std::wstring& text, const std::wstring& sourceName, bool printResult) {
    auto& listener = hostrt::Listener::Instance();
    listener.SetEcho(true);
    mxs::Interpreter& interp = mxs::Interpreter::Shared();
    interp.ResetAssertions();
    int rc = 0;
    try {
        const mxs::Value result = interp.Execute(text, sourceName);
        if (printResult) listener.Write(mxs::PrintForm(result) + L"\n");
    } catch (const mxs::ScriptError& e) {
        listener.Flush();
        Put(stderr, e.Report());
        rc = 1;
    }
    listener.Flush();
    if (interp.AssertionsFailed() > 0) {
        Put(stderr, L"-- " + std::to_wstring(interp.AssertionsFailed()) + L" of " +
                        std::to_wstring(interp.AssertionsRun()) + L" assertions failed" +
                        (sourceName.empty() ? std::wstring() : L" in " + sourceName) + L"\n");
        rc = 1;
    }
    return rc;
}

}  // namespace

int RunScriptFile(const std::string& path) {
    std::wstring text;
    std::string problem;
    if (!ReadScript(path, text, problem)) {
        std::fprintf(stderr, "maxhost: %s\n", problem.c_str());
        return 1;
    }
    return RunText(text, MaxSDK::FromUTF8(path), false);
}

int RunScriptText(const std::wstring& text, const std::wstring& sourceName) { return RunText(text, sourceName, false); }

int EvalText(const std::string& text) { return RunText(MaxSDK::FromUTF8(text), L"", true); }

int RunListener(std::FILE* in) {
    auto& listener = hostrt::Listener::Instance();
    listener.SetEcho(true);
    mxs::Interpreter& interp = mxs::Interpreter::Shared();
    const bool tty = isatty(fileno(in)) != 0;
    if (tty) Put(stdout, L"MAXScript listener of maxhost. End with Ctrl-D.\n");
    std::wstring pending;
    char buffer[4096];
    for (;;) {
        if (tty) Put(stdout, pending.empty() ? L"> " : L". ");
        std::string line;
        bool got = false;
        while (std::fgets(buffer, sizeof buffer, in)) {
            got = true;
            line += buffer;
            if (!line.empty() && line.back() == '\n') break;
        }
        if (!got) break;
        pending += MaxSDK::FromUTF8(line);
        if (mxs::IsIncomplete(pending)) continue;
        try {
            const mxs::Value result = interp.Execute(pending);
            listener.Write(mxs::PrintForm(result) + L"\n");
        } catch (const mxs::ScriptError& e) {
            listener.Write(e.Report());
        }
        listener.Flush();
        pending.clear();
    }
    if (!pending.empty()) {
        // Input ended inside an expression: run it to report what is missing.
        try {
            interp.Execute(pending);
        } catch (const mxs::ScriptError& e) {
            listener.Write(e.Report());
        }
    }
    listener.Flush();
    return 0;
}

}  // namespace maxhost
