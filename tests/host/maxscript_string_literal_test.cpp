// The one quoting of data into MAXScript text: whatever a name or a setting holds comes back as the same text
// and runs nothing.
#include "listener.h"
#include "maxscript/maxscript.h"
#include "maxscript/string_literal.h"
#include "platform/listener_capture.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(MaxScriptStringLiteral, HostileTextsReadBackAsTheSameTextAndRunNothing) {
    const std::wstring texts[] = {
        L"",
        L"plain name",
        L"a\"b\nprint \"pwned\"",
        L"C:\\scenes\\shot.max",
        L"ends with a backslash\\",
        L"\" + (print \"pwned\") + \"",
        L"tab\there\r\nand 100% of %1 \\% \\n",
        L"@\"verbatim\"",
        L"caf\u00e9 \u6f22\u5b57",
    };
    auto& listener = hostrt::Listener::Instance();
    for (const std::wstring& text : texts) {
        listener.Clear();
        const std::wstring script = L"x = " + MaxScriptStringLiteral(text) + L"; x";
        FPValue value;
        ASSERT_TRUE(ExecuteMAXScriptScript(script.c_str(), MAXScript::ScriptSource::Embedded, TRUE, &value, TRUE))
            << MSTR(script.c_str()).ToUTF8();
        ASSERT_EQ(value.type, TYPE_STRING);
        EXPECT_EQ(std::wstring(value.s), text);
        EXPECT_EQ(listener.Text().find(L"pwned"), std::wstring::npos) << MSTR(text.c_str()).ToUTF8();
    }
    EXPECT_EQ(MaxScriptStringLiteral(L"a\"b\\c\nd"), L"\"a\\\"b\\\\c\\nd\"");
}

}  // namespace
