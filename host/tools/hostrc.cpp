// hostrc: the host's resource compiler. Reads a plug-in's resource script (UTF-8, the Windows .rc syntax for
// string tables and DIALOG/DIALOGEX templates, with #include of header files and #define'd identifiers; the
// standard window, dialog and control style names and IDOK/IDCANCEL/IDC_STATIC are known without a header) and
// writes a C++ source that the library is built with; the host's LoadStringW and DialogBoxParamW read the
// tables it exports.
//
//   hostrc <script.rc> <output.cpp>
//
// Errors name the file and line and end the run with status 1; nothing is written then.
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <fstream>
#include <algorithm>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

std::string ReadFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw Failure(path.string() + ": cannot be read");
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

// Decodes UTF-8 into code points; bad sequences are an error.
std::u32string DecodeUtf8(const std::string& text, const std::string& where) {
    std::u32string out;
    for (std::size_t i = 0; i < text.size();) {
        const auto c = static_cast<unsigned char>(text[i]);
        int extra = c < 0x80 ? 0 : (c >> 5) == 6 ? 1 : (c >> 4) == 14 ? 2 : (c >> 3) == 30 ? 3 : -1;
        if (extra < 0 || i + std::size_t(extra) >= text.size())
            throw Failure(where + ": the text is not valid UTF-8");
        char32_t cp = extra == 0 ? c : c & (0x3F >> extra);
        for (int k = 1; k <= extra; ++k) {
            const auto cc = static_cast<unsigned char>(text[i + std::size_t(k)]);
            if ((cc & 0xC0) != 0x80) throw Failure(where + ": the text is not valid UTF-8");
            cp = (cp << 6) | (cc & 0x3F);
        }
        out.push_back(cp);
        i += std::size_t(extra) + 1;
    }
    return out;
}

// Identifiers a resource script may use without a header: the standard style bits (the values of the
// platform's windows headers) and the dialog answer ids.
const std::pair<const char*, long long> kBuiltinDefines[] = {
    {"IDOK", 1}, {"IDCANCEL", 2}, {"IDABORT", 3}, {"IDRETRY", 4}, {"IDIGNORE", 5}, {"IDYES", 6}, {"IDNO", 7},
    {"IDCLOSE", 8}, {"IDHELP", 9}, {"IDC_STATIC", -1},
    {"WS_OVERLAPPED", 0}, {"WS_POPUP", 0x80000000LL}, {"WS_CHILD", 0x40000000}, {"WS_MINIMIZE", 0x20000000},
    {"WS_VISIBLE", 0x10000000}, {"WS_DISABLED", 0x08000000}, {"WS_CLIPSIBLINGS", 0x04000000},
    {"WS_CLIPCHILDREN", 0x02000000}, {"WS_MAXIMIZE", 0x01000000}, {"WS_CAPTION", 0x00C00000},
    {"WS_BORDER", 0x00800000}, {"WS_DLGFRAME", 0x00400000}, {"WS_VSCROLL", 0x00200000}, {"WS_HSCROLL", 0x00100000},
    {"WS_SYSMENU", 0x00080000}, {"WS_THICKFRAME", 0x00040000}, {"WS_GROUP", 0x00020000}, {"WS_TABSTOP", 0x00010000},
    {"WS_MINIMIZEBOX", 0x00020000}, {"WS_MAXIMIZEBOX", 0x00010000},
    {"WS_EX_DLGMODALFRAME", 0x1}, {"WS_EX_NOPARENTNOTIFY", 0x4}, {"WS_EX_TOPMOST", 0x8}, {"WS_EX_ACCEPTFILES", 0x10},
    {"WS_EX_TRANSPARENT", 0x20}, {"WS_EX_TOOLWINDOW", 0x80}, {"WS_EX_WINDOWEDGE", 0x100},
    {"WS_EX_CLIENTEDGE", 0x200}, {"WS_EX_CONTEXTHELP", 0x400}, {"WS_EX_CONTROLPARENT", 0x10000},
    {"WS_EX_STATICEDGE", 0x20000}, {"WS_EX_APPWINDOW", 0x40000},
    {"DS_ABSALIGN", 0x1}, {"DS_SYSMODAL", 0x2}, {"DS_3DLOOK", 0x4}, {"DS_FIXEDSYS", 0x8}, {"DS_NOFAILCREATE", 0x10},
    {"DS_LOCALEDIT", 0x20}, {"DS_SETFONT", 0x40}, {"DS_MODALFRAME", 0x80}, {"DS_NOIDLEMSG", 0x100},
    {"DS_SETFOREGROUND", 0x200}, {"DS_CONTROL", 0x400}, {"DS_CENTER", 0x800}, {"DS_CENTERMOUSE", 0x1000},
    {"DS_CONTEXTHELP", 0x2000}, {"DS_SHELLFONT", 0x48},
    {"BS_PUSHBUTTON", 0}, {"BS_DEFPUSHBUTTON", 1}, {"BS_CHECKBOX", 2}, {"BS_AUTOCHECKBOX", 3},
    {"BS_RADIOBUTTON", 4}, {"BS_3STATE", 5}, {"BS_AUTO3STATE", 6}, {"BS_GROUPBOX", 7}, {"BS_USERBUTTON", 8},
    {"BS_AUTORADIOBUTTON", 9}, {"BS_OWNERDRAW", 0xB}, {"BS_TYPEMASK", 0xF}, {"BS_LEFTTEXT", 0x20}, {"BS_TEXT", 0},
    {"BS_ICON", 0x40}, {"BS_BITMAP", 0x80}, {"BS_LEFT", 0x100}, {"BS_RIGHT", 0x200}, {"BS_CENTER", 0x300},
    {"BS_TOP", 0x400}, {"BS_BOTTOM", 0x800}, {"BS_VCENTER", 0xC00}, {"BS_PUSHLIKE", 0x1000},
    {"BS_MULTILINE", 0x2000}, {"BS_NOTIFY", 0x4000}, {"BS_FLAT", 0x8000},
    {"SS_LEFT", 0}, {"SS_CENTER", 1}, {"SS_RIGHT", 2}, {"SS_ICON", 3}, {"SS_BLACKRECT", 4}, {"SS_GRAYRECT", 5},
    {"SS_WHITERECT", 6}, {"SS_BLACKFRAME", 7}, {"SS_GRAYFRAME", 8}, {"SS_WHITEFRAME", 9}, {"SS_SIMPLE", 0xB},
    {"SS_LEFTNOWORDWRAP", 0xC}, {"SS_OWNERDRAW", 0xD}, {"SS_BITMAP", 0xE}, {"SS_ETCHEDHORZ", 0x10},
    {"SS_ETCHEDVERT", 0x11}, {"SS_ETCHEDFRAME", 0x12}, {"SS_TYPEMASK", 0x1F}, {"SS_NOPREFIX", 0x80},
    {"SS_NOTIFY", 0x100}, {"SS_CENTERIMAGE", 0x200}, {"SS_SUNKEN", 0x1000}, {"SS_ENDELLIPSIS", 0x4000},
    {"SS_PATHELLIPSIS", 0x8000},
    {"ES_LEFT", 0}, {"ES_CENTER", 1}, {"ES_RIGHT", 2}, {"ES_MULTILINE", 4}, {"ES_UPPERCASE", 8},
    {"ES_LOWERCASE", 0x10}, {"ES_PASSWORD", 0x20}, {"ES_AUTOVSCROLL", 0x40}, {"ES_AUTOHSCROLL", 0x80},
    {"ES_NOHIDESEL", 0x100}, {"ES_OEMCONVERT", 0x400}, {"ES_READONLY", 0x800}, {"ES_WANTRETURN", 0x1000},
    {"ES_NUMBER", 0x2000},
    {"CBS_SIMPLE", 1}, {"CBS_DROPDOWN", 2}, {"CBS_DROPDOWNLIST", 3}, {"CBS_OWNERDRAWFIXED", 0x10},
    {"CBS_OWNERDRAWVARIABLE", 0x20}, {"CBS_AUTOHSCROLL", 0x40}, {"CBS_OEMCONVERT", 0x80}, {"CBS_SORT", 0x100},
    {"CBS_HASSTRINGS", 0x200}, {"CBS_NOINTEGRALHEIGHT", 0x400}, {"CBS_DISABLENOSCROLL", 0x800},
    {"CBS_UPPERCASE", 0x2000}, {"CBS_LOWERCASE", 0x4000},
    {"LBS_NOTIFY", 0x1}, {"LBS_SORT", 0x2}, {"LBS_MULTIPLESEL", 0x8}, {"LBS_HASSTRINGS", 0x40},
    {"LBS_NOINTEGRALHEIGHT", 0x100}, {"LBS_EXTENDEDSEL", 0x800}, {"LBS_STANDARD", 0xA00003},
};

constexpr long long kChildVisible = 0x40000000 | 0x10000000;  // WS_CHILD | WS_VISIBLE

// A control statement of a dialog template: its window class, default style, and whether it starts with a text.
struct ControlStatement {
    const char* keyword;
    const char32_t* className;
    long long defaultStyle;
    bool hasText;
};
const ControlStatement kControlStatements[] = {
    {"LTEXT", U"Static", 0x0 | 0x00020000, true},           // SS_LEFT | WS_GROUP
    {"CTEXT", U"Static", 0x1 | 0x00020000, true},           // SS_CENTER | WS_GROUP
    {"RTEXT", U"Static", 0x2 | 0x00020000, true},           // SS_RIGHT | WS_GROUP
    {"PUSHBUTTON", U"Button", 0x0 | 0x00010000, true},      // BS_PUSHBUTTON | WS_TABSTOP
    {"DEFPUSHBUTTON", U"Button", 0x1 | 0x00010000, true},   // BS_DEFPUSHBUTTON | WS_TABSTOP
    {"CHECKBOX", U"Button", 0x2 | 0x00010000, true},        // BS_CHECKBOX | WS_TABSTOP
    {"AUTOCHECKBOX", U"Button", 0x3 | 0x00010000, true},    // BS_AUTOCHECKBOX | WS_TABSTOP
    {"RADIOBUTTON", U"Button", 0x4, true},                  // BS_RADIOBUTTON
    {"STATE3", U"Button", 0x5 | 0x00010000, true},          // BS_3STATE | WS_TABSTOP
    {"AUTO3STATE", U"Button", 0x6 | 0x00010000, true},      // BS_AUTO3STATE | WS_TABSTOP
    {"GROUPBOX", U"Button", 0x7, true},                     // BS_GROUPBOX
    {"AUTORADIOBUTTON", U"Button", 0x9, true},              // BS_AUTORADIOBUTTON
    {"EDITTEXT", U"Edit", 0x0 | 0x00800000 | 0x00010000, false},  // ES_LEFT | WS_BORDER | WS_TABSTOP
    {"COMBOBOX", U"ComboBox", 0x1 | 0x00010000, false},     // CBS_SIMPLE | WS_TABSTOP
    {"LISTBOX", U"ListBox", 0x1 | 0x00800000, false},       // LBS_NOTIFY | WS_BORDER
};

class Compiler {
public:
    Compiler() {
        for (const auto& [name, value] : kBuiltinDefines) defines_[name] = value;
    }

    void CompileScript(const fs::path& path) { Run(path, true); }

    void Write(std::ostream& out) const {
        out << "// Generated by hostrc from the library's resource script. Do not edit.\n"
               "#include \"plugapi.h\"\n#include \"resource_module.h\"\n\nnamespace {\n"
               "const MaxResourceString kStrings[] = {\n";
        for (const auto& [id, text] : strings_) out << "    {" << id << "u, L\"" << Escape(text) << "\"},\n";
        if (strings_.empty()) out << "    {0u, nullptr},\n";
        out << "};\n";
        for (const auto& [id, dialog] : dialogs_) {
            if (dialog.controls.empty()) continue;
            out << "const MaxResourceControl kDialog" << id << "Controls[] = {\n";
            for (const Control& c : dialog.controls)
                out << "    {" << c.id << ", L\"" << Escape(c.className) << "\", L\"" << Escape(c.text) << "\", "
                    << Hex(c.style) << ", " << Hex(c.exStyle) << ", " << c.x << ", " << c.y << ", " << c.cx << ", "
                    << c.cy << "},\n";
            out << "};\n";
        }
        if (!dialogs_.empty()) {
            out << "const MaxResourceDialog kDialogs[] = {\n";
            for (const auto& [id, d] : dialogs_)
                out << "    {" << id << "u, " << Hex(d.style) << ", " << Hex(d.exStyle) << ", " << d.x << ", " << d.y
                    << ", " << d.cx << ", " << d.cy << ", L\"" << Escape(d.caption) << "\", L\"" << Escape(d.font)
                    << "\", " << d.fontSize << ", "
                    << (d.controls.empty() ? std::string("nullptr") : "kDialog" + std::to_string(id) + "Controls")
                    << ", " << d.controls.size() << "},\n";
            out << "};\n";
        }
        out << "const MaxResourceModule kModule{kStrings, " << strings_.size() << ", "
            << (dialogs_.empty() ? "nullptr" : "kDialogs") << ", " << dialogs_.size() << "};\n}  // namespace\n\n"
            << "MAX_PLUGIN_EXPORT const MaxResourceModule* MaxResourceModuleTable() { return &kModule; }\n";
    }

private:
    struct Token {
        enum Kind { Word, Number, String, Punct, End } kind = End;
        std::string text;
        std::u32string str;  // String tokens
        int line = 0;
    };

    struct Control {
        long long id = -1;
        std::u32string className;
        std::u32string text;
        long long style = 0;
        long long exStyle = 0;
        long long x = 0, y = 0, cx = 0, cy = 0;
    };
    struct Dialog {
        long long style = 0;
        long long exStyle = 0;
        long long x = 0, y = 0, cx = 0, cy = 0;
        std::u32string caption;
        std::u32string font;
        long long fontSize = 0;
        std::vector<Control> controls;
    };
    // A style expression: bits named, and bits removed by NOT (they also clear a statement's defaults).
    struct Bits {
        long long set = 0;
        long long cleared = 0;
    };

    std::map<std::string, long long> defines_;
    std::map<unsigned, std::u32string> strings_;
    std::map<unsigned, Dialog> dialogs_;
    std::vector<fs::path> seen_;

    static std::string Hex(long long value) {
        char buf[24];
        std::snprintf(buf, sizeof buf, "0x%08Xu", unsigned(std::uint32_t(value)));
        return buf;
    }

    static std::string Escape(const std::u32string& text) {
        std::string out;
        char buf[16];
        for (char32_t c : text) {
            if (c == U'\\') out += "\\\\";
            else if (c == U'"') out += "\\\"";
            else if (c == U'\n') out += "\\n";
            else if (c == U'\t') out += "\\t";
            else if (c == U'\r') out += "\\r";
            else if (c < 0x20 || c == 0x7F) { std::snprintf(buf, sizeof buf, "\\%03o", unsigned(c)); out += buf; }
            else if (c < 0x80) out += char(c);
            else { std::snprintf(buf, sizeof buf, c > 0xFFFF ? "\\U%08X" : "\\u%04X", unsigned(c)); out += buf; }
        }
        return out;
    }

    // One file: header files only contribute #defines; the script also holds resource statements.
    void Run(const fs::path& path, bool script) {
        const fs::path canonical = fs::weakly_canonical(path);
        for (const auto& p : seen_)
            if (p == canonical) return;  // each header once
        seen_.push_back(canonical);
        const std::string name = path.filename().string();
        const std::u32string text = DecodeUtf8(ReadFile(path), path.string());
        std::vector<Token> tokens = Tokenize(text, path);
        std::size_t i = 0;
        auto at = [&](std::size_t k) -> const Token& { return tokens[std::min(k, tokens.size() - 1)]; };
        auto fail = [&](const Token& t, const std::string& why) -> Failure {
            return Failure(path.string() + ":" + std::to_string(t.line) + ": " + why);
        };
        while (tokens[i].kind != Token::End) {
            const Token& t = tokens[i];
            if (t.kind == Token::Punct && t.text == "#") {
                const Token& directive = at(i + 1);
                if (directive.text == "include") {
                    const Token& file = at(i + 2);
                    if (file.kind != Token::String) throw fail(file, "#include needs a quoted file name");
                    Run(path.parent_path() / Narrow(file.str), false);
                    i += 3;
                } else if (directive.text == "define") {
                    const Token& id = at(i + 2);
                    const bool negative = at(i + 3).kind == Token::Punct && at(i + 3).text == "-";
                    const Token& value = at(i + (negative ? 4 : 3));
                    if (id.kind != Token::Word || value.line != id.line)
                        throw fail(id, "#define needs a name and a value");
                    defines_[id.text] = negative ? -Value(value, path) : Value(value, path);
                    i += negative ? 5 : 4;
                } else if (directive.text == "pragma" || directive.text == "ifndef" || directive.text == "endif") {
                    // pragma once and include guards: the rest of the line is ignored
                    const int line = directive.line;
                    i += 1;
                    while (tokens[i].kind != Token::End && tokens[i].line == line) ++i;
                } else {
                    throw fail(directive, "unknown directive #" + directive.text);
                }
            } else if (!script) {
                throw fail(t, "a header may hold only #define lines");
            } else if (t.kind == Token::Word && t.text == "STRINGTABLE") {
                i = StringTable(tokens, i + 1, path);
            } else if ((t.kind == Token::Word || t.kind == Token::Number) && at(i + 1).kind == Token::Word &&
                       (at(i + 1).text == "DIALOG" || at(i + 1).text == "DIALOGEX")) {
                i = DialogTemplate(tokens, i, path);
            } else if (t.kind == Token::Word && (t.text == "LANGUAGE" || t.text == "CODEPAGE")) {
                const int line = t.line;
                while (tokens[i].kind != Token::End && tokens[i].line == line) ++i;
            } else {
                throw fail(t, "unsupported resource statement '" + t.text + "' in " + name);
            }
        }
    }

    std::size_t StringTable(const std::vector<Token>& tokens, std::size_t i, const fs::path& path) {
        while (tokens[i].kind == Token::Word && tokens[i].text != "BEGIN") ++i;  // options such as DISCARDABLE
        if (!IsOpen(tokens[i]))
            throw Failure(path.string() + ":" + std::to_string(tokens[i].line) + ": STRINGTABLE needs BEGIN");
        ++i;
        while (!IsClose(tokens[i])) {
            const Token& id = tokens[i];
            if (id.kind == Token::End) throw Failure(path.string() + ": STRINGTABLE is not closed");
            const long long value = Value(id, path);
            if (value < 0 || value > 0xFFFF)
                throw Failure(path.string() + ":" + std::to_string(id.line) + ": string id out of range");
            ++i;
            if (tokens[i].kind == Token::Punct && tokens[i].text == ",") ++i;
            if (tokens[i].kind != Token::String)
                throw Failure(path.string() + ":" + std::to_string(tokens[i].line) + ": string id " +
                              std::to_string(value) + " needs a quoted text");
            std::u32string text;
            while (tokens[i].kind == Token::String) text += tokens[i++].str;  // adjacent texts join
            if (!strings_.emplace(unsigned(value), text).second)
                throw Failure(path.string() + ":" + std::to_string(id.line) + ": string id " +
                              std::to_string(value) + " is defined twice");
        }
        return i + 1;
    }

    static bool IsPunct(const Token& t, const char* text) { return t.kind == Token::Punct && t.text == text; }

    [[noreturn]] static void Fail(const fs::path& path, const Token& t, const std::string& why) {
        throw Failure(path.string() + ":" + std::to_string(t.line) + ": " + why);
    }

    // expr := term (('|' | '+') term)* ; term := 'NOT' atom | '-' atom | '~' atom | atom ;
    // atom := number | identifier | '(' expr ')'
    Bits Expression(const std::vector<Token>& tokens, std::size_t& i, const fs::path& path) const {
        Bits bits = Term(tokens, i, path);
        while (IsPunct(tokens[i], "|") || IsPunct(tokens[i], "+")) {
            const bool plus = tokens[i].text == "+";
            ++i;
            const Bits next = Term(tokens, i, path);
            bits.set = plus ? bits.set + next.set : bits.set | next.set;
            bits.cleared |= next.cleared;
        }
        return bits;
    }

    Bits Term(const std::vector<Token>& tokens, std::size_t& i, const fs::path& path) const {
        const Token& t = tokens[i];
        if (t.kind == Token::Word && t.text == "NOT") {
            ++i;
            const Bits atom = Atom(tokens, i, path);
            return {0, atom.set};
        }
        if (IsPunct(t, "-") || IsPunct(t, "~")) {
            ++i;
            const Bits atom = Atom(tokens, i, path);
            return {t.text == "-" ? -atom.set : ~atom.set, atom.cleared};
        }
        return Atom(tokens, i, path);
    }

    Bits Atom(const std::vector<Token>& tokens, std::size_t& i, const fs::path& path) const {
        if (IsPunct(tokens[i], "(")) {
            ++i;
            const Bits inner = Expression(tokens, i, path);
            if (!IsPunct(tokens[i], ")")) Fail(path, tokens[i], "')' is expected");
            ++i;
            return inner;
        }
        return {Value(tokens[i++], path), 0};
    }

    // A number (an id, a coordinate): an expression without NOT.
    long long Number(const std::vector<Token>& tokens, std::size_t& i, const fs::path& path, const char* what,
                     long long low, long long high) const {
        const Token& start = tokens[i];
        const Bits bits = Expression(tokens, i, path);
        if (bits.cleared) Fail(path, start, std::string("NOT is not allowed in ") + what);
        if (bits.set < low || bits.set > high)
            Fail(path, start, std::string(what) + " " + std::to_string(bits.set) + " is out of range");
        return bits.set;
    }

    static void Comma(const std::vector<Token>& tokens, std::size_t& i, const fs::path& path, const char* after) {
        if (!IsPunct(tokens[i], ",")) Fail(path, tokens[i], std::string("',' is expected after ") + after);
        ++i;
    }

    static std::u32string Text(const std::vector<Token>& tokens, std::size_t& i, const fs::path& path,
                               const char* what) {
        if (tokens[i].kind != Token::String) Fail(path, tokens[i], std::string(what) + " needs a quoted text");
        std::u32string text;
        while (tokens[i].kind == Token::String) text += tokens[i++].str;
        return text;
    }

    // x, y, cx, cy in dialog units.
    void Rect(const std::vector<Token>& tokens, std::size_t& i, const fs::path& path, long long& x, long long& y,
              long long& cx, long long& cy) const {
        x = Number(tokens, i, path, "x", -32768, 32767);
        Comma(tokens, i, path, "x");
        y = Number(tokens, i, path, "y", -32768, 32767);
        Comma(tokens, i, path, "y");
        cx = Number(tokens, i, path, "width", 0, 32767);
        Comma(tokens, i, path, "width");
        cy = Number(tokens, i, path, "height", 0, 32767);
    }

    // <id> DIALOG|DIALOGEX [options] x, y, cx, cy [, help] {STYLE|EXSTYLE|CAPTION|FONT|...} BEGIN controls END
    std::size_t DialogTemplate(const std::vector<Token>& tokens, std::size_t i, const fs::path& path) {
        const Token& idToken = tokens[i];
        const long long id = Value(idToken, path);
        if (id < 1 || id > 0xFFFF) Fail(path, idToken, "dialog id " + std::to_string(id) + " is out of range");
        const bool extended = tokens[i + 1].text == "DIALOGEX";
        i += 2;
        static const char* const kMemoryOptions[] = {"DISCARDABLE", "MOVEABLE", "PURE", "IMPURE",
                                                     "PRELOAD",     "LOADONCALL", "FIXED"};
        while (tokens[i].kind == Token::Word &&
               std::find_if(std::begin(kMemoryOptions), std::end(kMemoryOptions),
                            [&](const char* o) { return tokens[i].text == o; }) != std::end(kMemoryOptions))
            ++i;
        Dialog dialog;
        dialog.style = 0x80000000LL | 0x00800000 | 0x00080000;  // WS_POPUP | WS_BORDER | WS_SYSMENU
        Rect(tokens, i, path, dialog.x, dialog.y, dialog.cx, dialog.cy);
        if (extended && IsPunct(tokens[i], ",")) {  // help id
            ++i;
            Number(tokens, i, path, "help id", -0x7FFFFFFFLL - 1, 0xFFFFFFFFLL);
        }
        bool hasCaption = false;
        while (!IsOpen(tokens[i])) {
            const Token& option = tokens[i];
            if (option.kind == Token::End) Fail(path, option, "dialog " + std::to_string(id) + " needs BEGIN");
            ++i;
            if (option.text == "STYLE") {
                const Bits bits = Expression(tokens, i, path);
                dialog.style = bits.set & ~bits.cleared;
            } else if (option.text == "EXSTYLE") {
                const Bits bits = Expression(tokens, i, path);
                dialog.exStyle = bits.set & ~bits.cleared;
            } else if (option.text == "CAPTION") {
                dialog.caption = Text(tokens, i, path, "CAPTION");
                hasCaption = true;
            } else if (option.text == "FONT") {
                dialog.fontSize = Number(tokens, i, path, "font size", 1, 1000);
                Comma(tokens, i, path, "the font size");
                dialog.font = Text(tokens, i, path, "FONT");
                while (IsPunct(tokens[i], ",")) {  // weight, italic, charset
                    ++i;
                    Number(tokens, i, path, "font option", 0, 0xFFFF);
                }
            } else if (option.text == "MENU" || option.text == "CLASS") {
                ++i;  // a name or a text; the host's dialogs have neither
            } else if (option.text == "CHARACTERISTICS" || option.text == "VERSION") {
                Number(tokens, i, path, option.text.c_str(), -0x7FFFFFFFLL - 1, 0xFFFFFFFFLL);
            } else if (option.text == "LANGUAGE") {
                Number(tokens, i, path, "language", 0, 0xFFFF);
                Comma(tokens, i, path, "the language");
                Number(tokens, i, path, "sublanguage", 0, 0xFFFF);
            } else {
                Fail(path, option, "unknown dialog option '" + option.text + "' in dialog " + std::to_string(id));
            }
        }
        if (hasCaption) dialog.style |= 0x00C00000;  // WS_CAPTION
        ++i;
        while (!IsClose(tokens[i])) {
            if (tokens[i].kind == Token::End) Fail(path, tokens[i], "dialog " + std::to_string(id) + " is not closed");
            dialog.controls.push_back(ControlLine(tokens, i, path, extended));
        }
        if (!dialogs_.emplace(unsigned(id), std::move(dialog)).second)
            Fail(path, idToken, "dialog id " + std::to_string(id) + " is defined twice");
        return i + 1;
    }

    Control ControlLine(const std::vector<Token>& tokens, std::size_t& i, const fs::path& path, bool extended) const {
        const Token& keyword = tokens[i];
        Control control;
        long long defaults = kChildVisible;
        bool hasText = true;
        bool generic = false;
        if (keyword.kind == Token::Word && keyword.text == "CONTROL") {
            generic = true;
        } else {
            const ControlStatement* statement = nullptr;
            for (const ControlStatement& s : kControlStatements)
                if (keyword.kind == Token::Word && keyword.text == s.keyword) statement = &s;
            if (!statement) Fail(path, keyword, "unknown control statement '" + keyword.text + "'");
            control.className = statement->className;
            defaults |= statement->defaultStyle;
            hasText = statement->hasText;
        }
        ++i;
        if (hasText) {
            if (tokens[i].kind == Token::String)
                control.text = Text(tokens, i, path, keyword.text.c_str());
            else
                Number(tokens, i, path, "control text", -0x7FFFFFFFLL - 1, 0xFFFFFFFFLL);  // an icon or bitmap
            Comma(tokens, i, path, "the control text");
        }
        control.id = Number(tokens, i, path, "control id", -1, 0xFFFF);
        Comma(tokens, i, path, "the control id");
        Bits style;
        if (generic) {
            if (tokens[i].kind == Token::String)
                control.className = Text(tokens, i, path, "CONTROL");
            else if (tokens[i].kind == Token::Word)
                control.className = Widen(tokens[i++].text);
            else
                Fail(path, tokens[i], "CONTROL needs a window class");
            Comma(tokens, i, path, "the window class");
            style = Expression(tokens, i, path);
            Comma(tokens, i, path, "the style");
        }
        Rect(tokens, i, path, control.x, control.y, control.cx, control.cy);
        Bits exStyle;
        if (IsPunct(tokens[i], ",")) {
            ++i;
            if (generic) {
                exStyle = Expression(tokens, i, path);
            } else {
                style = Expression(tokens, i, path);
                if (IsPunct(tokens[i], ",")) {
                    ++i;
                    exStyle = Expression(tokens, i, path);
                }
            }
            if (extended && IsPunct(tokens[i], ",")) {  // help id
                ++i;
                Number(tokens, i, path, "help id", -0x7FFFFFFFLL - 1, 0xFFFFFFFFLL);
            }
        }
        control.style = ((defaults | style.set) & ~style.cleared) & 0xFFFFFFFFLL;
        control.exStyle = (exStyle.set & ~exStyle.cleared) & 0xFFFFFFFFLL;
        return control;
    }

    static std::u32string Widen(const std::string& s) { return std::u32string(s.begin(), s.end()); }

    static bool IsOpen(const Token& t) { return t.text == "BEGIN" || (t.kind == Token::Punct && t.text == "{"); }
    static bool IsClose(const Token& t) { return t.text == "END" || (t.kind == Token::Punct && t.text == "}"); }

    long long Value(const Token& t, const fs::path& path) const {
        if (t.kind == Token::Number) return std::stoll(t.text, nullptr, 0);
        if (t.kind == Token::Word) {
            auto it = defines_.find(t.text);
            if (it != defines_.end()) return it->second;
            throw Failure(path.string() + ":" + std::to_string(t.line) + ": unknown identifier " + t.text);
        }
        throw Failure(path.string() + ":" + std::to_string(t.line) + ": a number or identifier is expected");
    }

    static std::string Narrow(const std::u32string& s) {
        std::string out;
        for (char32_t c : s) out += c < 0x80 ? char(c) : '?';
        return out;
    }

    static std::vector<Token> Tokenize(const std::u32string& s, const fs::path& path) {
        std::vector<Token> out;
        int line = 1;
        std::size_t i = 0;
        auto fail = [&](const std::string& why) {
            return Failure(path.string() + ":" + std::to_string(line) + ": " + why);
        };
        while (i < s.size()) {
            const char32_t c = s[i];
            if (c == U'\n') { ++line; ++i; continue; }
            if (c == U' ' || c == U'\t' || c == U'\r' || c == 0xFEFF) { ++i; continue; }
            if (c == U'/' && i + 1 < s.size() && s[i + 1] == U'/') {
                while (i < s.size() && s[i] != U'\n') ++i;
                continue;
            }
            if (c == U'/' && i + 1 < s.size() && s[i + 1] == U'*') {
                i += 2;
                while (i + 1 < s.size() && !(s[i] == U'*' && s[i + 1] == U'/')) line += s[i++] == U'\n';
                if (i + 1 >= s.size()) throw fail("unterminated comment");
                i += 2;
                continue;
            }
            Token t;
            t.line = line;
            if (c == U'"' || (c == U'L' && i + 1 < s.size() && s[i + 1] == U'"')) {
                if (c == U'L') ++i;
                t.kind = Token::String;
                ++i;
                for (;;) {
                    if (i >= s.size() || s[i] == U'\n') throw fail("unterminated string");
                    char32_t ch = s[i++];
                    if (ch == U'"') {
                        if (i < s.size() && s[i] == U'"') { t.str += U'"'; ++i; continue; }  // "" is a quote
                        break;
                    }
                    if (ch == U'\\' && i < s.size()) {
                        const char32_t e = s[i++];
                        switch (e) {
                            case U'n': ch = U'\n'; break;
                            case U't': ch = U'\t'; break;
                            case U'r': ch = U'\r'; break;
                            case U'0': ch = 0; break;
                            case U'\\': ch = U'\\'; break;
                            case U'"': ch = U'"'; break;
                            default: throw fail(std::string("unknown escape \\") + char(e < 0x80 ? e : '?'));
                        }
                    }
                    t.str += ch;
                }
            } else if (c >= U'0' && c <= U'9') {
                t.kind = Token::Number;
                while (i < s.size() && (std::isalnum(int(s[i] < 0x80 ? s[i] : 0)))) t.text += char(s[i++]);
                if (!t.text.empty() && (t.text.back() == 'L' || t.text.back() == 'U')) t.text.pop_back();
            } else if (c == U'_' || (c < 0x80 && std::isalpha(int(c)))) {
                t.kind = Token::Word;
                while (i < s.size() && s[i] < 0x80 && (s[i] == U'_' || std::isalnum(int(s[i])))) t.text += char(s[i++]);
            } else if (c < 0x80) {
                t.kind = Token::Punct;
                t.text = char(c);
                ++i;
            } else {
                throw fail("unexpected character outside a string");
            }
            out.push_back(std::move(t));
        }
        Token end;
        end.line = line;
        out.push_back(end);
        return out;
    }
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: hostrc <script.rc> <output.cpp>\n");
        return 2;
    }
    try {
        Compiler compiler;
        compiler.CompileScript(argv[1]);
        std::ostringstream text;
        compiler.Write(text);
        const fs::path out = argv[2];
        const fs::path temp = out.string() + ".tmp";
        {
            std::ofstream file(temp, std::ios::binary);
            file << text.str();
            if (!file) throw Failure(temp.string() + ": cannot be written");
        }
        fs::rename(temp, out);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "hostrc: %s\n", e.what());
        return 1;
    }
    return 0;
}
