// `maxhost run FILE.ms`, `maxhost eval "TEXT"` and the interactive listener (maxhost without a command).
#include "commands.h"

#include "maxscript/interpreter.h"
#include "maxscript/parser.h"
#include "maxscript/print.h"
#include "maxscript/quit.h"
#include "platform/listener_capture.h"
#include "platform/session.h"
#include "platform/text_files.h"
#include "strclass.h"

#include <optional>
#include <unistd.h>

namespace maxhost {

namespace {

namespace mxs = hostrt::mxs;

void Put(std::FILE* f, const std::wstring& text) {
    const std::string utf8 = MaxSDK::ToUTF8(text);
    std::fwrite(utf8.data(), 1, utf8.size(), f);
    std::fflush(f);
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
    } catch (const mxs::QuitSignal& quit) {
        rc = quit.exitCode;  // quitMax: the script ends here, the application after it
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
    const std::optional<std::wstring> text = hostrt::ReadTextFile(path);
    if (!text) {
        std::fprintf(stderr, "maxhost: cannot open %s\n", path.c_str());
        return 1;
    }
    return RunText(*text, MaxSDK::FromUTF8(path), false);
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
        } catch (const mxs::QuitSignal&) {
        }
        listener.Flush();
        pending.clear();
        if (hostrt::Session::Instance().QuitRequested()) return hostrt::Session::Instance().QuitExitCode();
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
