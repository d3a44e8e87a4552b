// The MAXScript parser's definitions: struct, rollout, utility, rcmenu, tool, scripted plugin, attributes
// (with their parameter blocks) and macroScript. Each reads its header (name, caption, keywords) and then
// its clauses: members, locals, functions, event handlers (`on ... do`), controls and nested definitions.
#include "maxscript/parser_impl.h"

#include <array>

namespace hostrt::mxs {

using namespace ast;

namespace {

constexpr std::array kControlTypes = {
    L"activeXControl", L"angle",        L"bitmap",      L"button",        L"checkbox",     L"checkbutton",
    L"colorpicker",    L"combobox",     L"curvecontrol", L"dotNetControl", L"dropdownlist", L"edittext",
    L"groupbox",       L"hyperlink",    L"imgtag",      L"label",         L"listbox",      L"mapbutton",
    L"materialbutton", L"multilistbox", L"pickbutton",  L"progressbar",   L"radiobuttons", L"slider",
    L"spinner",        L"subrollout",   L"timer",
};

bool IsControlType(const Token& t) {
    for (const wchar_t* type : kControlTypes)
        if (t.IsWord(type)) return true;
    return false;
}

struct DefinitionWord {
    const wchar_t* word;
    DefKind kind;
    bool stringName;  // the name may be written as a string
};
constexpr DefinitionWord kDefinitionWords[] = {
    {L"struct", DefKind::Struct, false},     {L"rollout", DefKind::Rollout, false},
    {L"utility", DefKind::Utility, false},   {L"rcmenu", DefKind::RCMenu, false},
    {L"tool", DefKind::Tool, false},         {L"plugin", DefKind::Plugin, false},
    {L"attributes", DefKind::Attributes, true}, {L"macroScript", DefKind::MacroScript, true},
};

const wchar_t* ClauseExpected(DefKind kind) {
    switch (kind) {
    case DefKind::RCMenu: return L"<menu item>";
    case DefKind::Tool: return L"<tool clause>";
    case DefKind::Plugin: return L"<plugin clause>";
    case DefKind::Attributes: return L"<attributes clause>";
    case DefKind::Parameters: return L"<parameter>";
    default: return L"<rollout clause>";
    }
}

}  // namespace

std::optional<DefKind> Parser::startsDefinition() const {
    if (cur().kind != Tok::Ident) return std::nullopt;
    const Token& n = peek();
    if (n.newlineBefore) return std::nullopt;
    for (const DefinitionWord& d : kDefinitionWords) {
        if (!cur().IsWord(d.word)) continue;
        if ((n.kind == Tok::Ident && !IsReservedWord(n)) || (d.stringName && n.kind == Tok::String)) return d.kind;
    }
    return std::nullopt;
}

NodePtr Parser::parseDefinition(DefKind kind) {
    auto def = make<Definition>(cur());
    def->what = kind;
    next();
    auto nameOrString = [&](const wchar_t* what) {
        if (cur().kind == Tok::String) {
            def->name = cur().text;
            next();
        } else {
            def->name = expectName(what);
        }
    };
    switch (kind) {
    case DefKind::Struct:
        def->name = expectName(L"<struct name>");
        parseStructBody(*def);
        return def;
    case DefKind::Rollout:
    case DefKind::Utility:
        def->name = expectName(L"<rollout name>");
        if (cur().kind != Tok::Keyword && !isPunct(L"(")) def->caption = parseArgument();
        parseHeaderKeywords(*def);
        parseClauses(*def);
        return def;
    case DefKind::RCMenu:
    case DefKind::Tool:
        def->name = expectName(kind == DefKind::Tool ? L"<tool name>" : L"<menu name>");
        parseHeaderKeywords(*def);
        parseClauses(*def);
        return def;
    case DefKind::Plugin:
        def->superclass = FoldCase(expectName(L"<plugin superclass>"));
        def->name = expectName(L"<plugin name>");
        parseHeaderKeywords(*def);
        parseClauses(*def);
        return def;
    case DefKind::Attributes:
        nameOrString(L"<attributes name>");
        parseHeaderKeywords(*def);
        parseClauses(*def);
        return def;
    case DefKind::MacroScript:
        nameOrString(L"<macroScript name>");
        if (cur().kind == Tok::String) def->caption = parseFactor();
        parseHeaderKeywords(*def);
        parseMacroBody(*def);
        return def;
    case DefKind::Parameters: break;
    }
    fail(L"<definition>");
}

KeywordArg Parser::parseKeywordArg() {
    KeywordArg kw{cur().text, nullptr};
    next();
    kw.value = parseArgument();
    return kw;
}

void Parser::parseKeywordArgs(std::vector<KeywordArg>& into) {
    while (cur().kind == Tok::Keyword) into.push_back(parseKeywordArg());
}

// Header keywords may go on over several lines up to the body's "(".
void Parser::parseHeaderKeywords(Definition& def) {
    parseKeywordArgs(def.keywords);
}

void Parser::parseFunctionMember(Definition& def, bool isPrivate) {
    NodePtr node = parseFn();
    const auto& fn = static_cast<const FnDef&>(*node);
    Member m;
    m.name = FoldCase(fn.name);
    m.written = fn.name;
    m.function = true;
    m.isPrivate = isPrivate;
    m.init = std::move(node);
    def.members.push_back(std::move(m));
}

void Parser::parseLocals(Definition& def) {
    NodePtr node = parseDecl();
    auto& decl = static_cast<Decl&>(*node);
    for (Decl::Item& item : decl.items) {
        Member m;
        m.name = item.name;
        m.written = item.name;
        m.init = std::move(item.init);
        def.members.push_back(std::move(m));
    }
}

// `on <words> do <expr>` (or `return <expr>`). With targetFirst the first word names the control, parameter
// or rollout and the second the event; otherwise the first word is the event. Later words are parameters.
void Parser::parseHandler(Definition& def, bool targetFirst) {
    const Token at = cur();
    next();  // on
    std::vector<std::wstring> words;
    auto fn = make<FnDef>(at);
    fn->handler = true;
    while ((cur().kind == Tok::Ident && !isWord(L"do") && !isWord(L"return")) || cur().kind == Tok::Keyword) {
        if (cur().kind == Tok::Keyword) {
            fn->keywords.push_back({FoldCase(cur().text), cur().text, nullptr});
        } else {
            words.push_back(cur().text);
        }
        next();
    }
    if (words.empty()) fail(L"<event name>");
    if (!isWord(L"do") && !isWord(L"return")) fail(L"do");
    next();
    Definition::Handler h;
    std::size_t first = 1;
    if (targetFirst && words.size() >= 2) {
        h.target = FoldCase(words[0]);
        h.event = FoldCase(words[1]);
        fn->name = words[0] + L"." + words[1];
        first = 2;
    } else {
        h.event = FoldCase(words[0]);
        fn->name = words[0];
    }
    for (std::size_t i = first; i < words.size(); ++i) {
        fn->params.push_back(FoldCase(words[i]));
        fn->byReference.push_back(false);
    }
    fn->body = parseExpr();
    h.fn = std::move(fn);
    def.handlers.push_back(std::move(h));
}

void Parser::parseStructBody(Definition& def) {
    expectPunct(L"(");
    bool isPrivate = false;
    for (;;) {
        while (isPunct(L",") || isPunct(L";")) next();
        if (isPunct(L")")) {
            next();
            return;
        }
        if (atEnd()) fail(L")");
        if (isWord(L"private") || isWord(L"public")) {
            // Everything after the word until the next one is private (public).
            isPrivate = isWord(L"private");
            next();
            continue;
        }
        if (isWord(L"fn") || isWord(L"function") || isWord(L"mapped")) {
            parseFunctionMember(def, isPrivate);
        } else if (isWord(L"on")) {
            parseHandler(def, false);
        } else if (isName()) {
            Member m;
            m.written = cur().text;
            m.name = FoldCase(cur().text);
            m.isPrivate = isPrivate;
            next();
            if (isPunct(L"=")) {
                next();
                m.init = parseExpr();
            }
            def.members.push_back(std::move(m));
        } else {
            fail(L"<struct member>");
        }
        if (!(isPunct(L",") || isPunct(L")") || cur().newlineBefore)) fail(L", or )");
    }
}

ControlDef Parser::parseControl(bool menu) {
    ControlDef c;
    c.line = cur().line;
    c.column = cur().column;
    c.type = FoldCase(cur().text);
    next();
    c.name = expectName(menu ? L"<menu item name>" : L"<control name>");
    if (cur().kind != Tok::Keyword && canStartArgument()) c.caption = parseArgument();
    parseKeywordArgs(c.keywords);
    return c;
}

ControlDef Parser::parseParameter() {
    ControlDef p;
    p.line = cur().line;
    p.column = cur().column;
    p.name = expectName(L"<parameter>");
    parseKeywordArgs(p.keywords);
    return p;
}

// `subMenu "Caption" [filter:f] ( items )`.
ControlDef Parser::parseSubMenu() {
    ControlDef sub;
    sub.line = cur().line;
    sub.column = cur().column;
    sub.type = L"submenu";
    next();
    sub.caption = parseArgument();
    parseKeywordArgs(sub.keywords);
    sub.children = parseControlGroup(true);
    return sub;
}

// The controls of a group (or the items of a sub-menu) between "(" and ")".
std::vector<ControlDef> Parser::parseControlGroup(bool menu) {
    expectPunct(L"(");
    std::vector<ControlDef> children;
    for (;;) {
        while (isPunct(L";")) next();
        if (isPunct(L")")) {
            next();
            return children;
        }
        if (menu && isWord(L"subMenu")) {
            children.push_back(parseSubMenu());
        } else if (menu ? (isWord(L"menuItem") || isWord(L"separator")) : IsControlType(cur())) {
            children.push_back(parseControl(menu));
        } else {
            fail(menu ? L"<menu item>" : L"<control>");
        }
    }
}

void Parser::parseClauses(Definition& def) {
    expectPunct(L"(");
    const DefKind kind = def.what;
    const bool ui = kind == DefKind::Rollout || kind == DefKind::Utility;
    const bool targetFirst = ui || kind == DefKind::RCMenu || kind == DefKind::Parameters;
    const bool holdsBlocks = kind == DefKind::Plugin || kind == DefKind::Attributes;
    for (;;) {
        while (isPunct(L";")) next();
        if (isPunct(L")")) {
            next();
            return;
        }
        if (atEnd()) fail(L")");
        if (isWord(L"local")) {
            parseLocals(def);
        } else if (isWord(L"global") || isWord(L"persistent")) {
            def.body.push_back(parseDecl());
        } else if (isWord(L"fn") || isWord(L"function") || isWord(L"mapped")) {
            parseFunctionMember(def, false);
        } else if (isWord(L"on")) {
            parseHandler(def, targetFirst);
        } else if (kind == DefKind::Parameters) {
            def.controls.push_back(parseParameter());
        } else if (holdsBlocks && isWord(L"parameters") && peek().kind == Tok::Ident) {
            auto block = make<Definition>(cur());
            block->what = DefKind::Parameters;
            next();
            block->name = expectName(L"<parameter block name>");
            parseHeaderKeywords(*block);
            parseClauses(*block);
            def.nested.push_back(std::move(block));
        } else if (holdsBlocks && (startsDefinition() == DefKind::Rollout || startsDefinition() == DefKind::Tool)) {
            NodePtr nested = parseDefinition(*startsDefinition());
            def.nested.push_back(std::unique_ptr<Definition>(static_cast<Definition*>(nested.release())));
        } else if (ui && isWord(L"group") && !peek().newlineBefore) {
            ControlDef group;
            group.line = cur().line;
            group.column = cur().column;
            group.type = L"group";
            next();
            group.caption = parseArgument();
            group.children = parseControlGroup(false);
            def.controls.push_back(std::move(group));
        } else if (ui && IsControlType(cur())) {
            def.controls.push_back(parseControl(false));
        } else if (kind == DefKind::RCMenu && (isWord(L"menuItem") || isWord(L"separator") || isWord(L"subMenu"))) {
            if (isWord(L"subMenu")) {
                def.controls.push_back(parseSubMenu());
            } else {
                def.controls.push_back(parseControl(true));
            }
        } else {
            fail(ClauseExpected(kind));
        }
    }
}

void Parser::parseMacroBody(Definition& def) {
    expectPunct(L"(");
    for (;;) {
        while (isPunct(L";")) next();
        if (isPunct(L")")) {
            next();
            return;
        }
        if (atEnd()) fail(L")");
        if (isWord(L"on") && peek().kind == Tok::Ident && !peek().newlineBefore) {
            parseHandler(def, false);
        } else {
            def.body.push_back(parseExpr());
            if (!(isPunct(L";") || isPunct(L")") || cur().newlineBefore)) fail(L"; or )");
        }
    }
}

}  // namespace hostrt::mxs
