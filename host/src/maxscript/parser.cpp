// The MAXScript parser: recursive descent over the token list. This half reads expressions and control
// forms; parser_definitions.cpp reads the definitions (struct, rollout, macroScript ...).
//
// Precedence, loosest first: assignment; or; and; not; comparisons; + -; * /; ^; as; unary minus; calls by
// juxtaposition (`f a b key:v`, ending at a line break); property access, indexing and `()` calls.
#include "maxscript/parser.h"

#include "maxscript/parser_impl.h"

#include <array>

namespace hostrt::mxs {

using namespace ast;

namespace {

constexpr std::array kReserved = {
    L"and",   L"as",     L"at",   L"by",     L"case",       L"catch",  L"collect", L"continue", L"do",
    L"else",  L"exit",   L"fn",   L"for",    L"function",   L"global", L"if",      L"in",       L"local",
    L"mapped", L"max",   L"not",  L"of",     L"off",        L"on",     L"or",      L"persistent", L"return",
    L"then",  L"to",     L"try",  L"undo",   L"where",      L"while",  L"with",    L"animate",
};

// Named coordinate systems and transform centres of `in coordsys` and `about`.
constexpr std::array kCoordSystems = {L"world",  L"local",         L"parent", L"screen", L"grid",
                                      L"gimbal", L"working_pivot", L"local_rotation_axis"};
constexpr std::array kCentres = {L"pivot", L"selection", L"center", L"coordsys", L"working_pivot"};

template <std::size_t N> bool IsOneOf(const Token& t, const std::array<const wchar_t*, N>& words) {
    for (const wchar_t* w : words)
        if (t.IsWord(w)) return true;
    return false;
}

}  // namespace

bool IsReservedWord(const Token& t) { return t.kind == Tok::Ident && IsOneOf(t, kReserved); }

// ---- Cursor and failures.

std::wstring Parser::describe(const Token& t) {
    switch (t.kind) {
    case Tok::End: return L"end of script";
    case Tok::String: return L"\"" + t.text + L"\"";
    case Tok::Name: return L"#" + t.text;
    case Tok::Keyword: return L"keyword parameter";
    case Tok::Path: return L"$" + t.text;
    default: return t.text;
    }
}

void Parser::fail(const std::wstring& expected) {
    const Token& t = cur();
    // Text the lexer could not read fails with the lexer's own error where it stands.
    if (t.kind == Tok::Error && lexError_) throw *lexError_;
    failedAtEnd_ = t.kind == Tok::End;
    ScriptError e = SyntaxError(describe(t), expected);
    e.SetLocation(t.line, t.column);
    throw e;
}

void Parser::expectPunct(std::wstring_view p) {
    if (!isPunct(p)) fail(std::wstring(p));
    next();
}

void Parser::expectWord(std::wstring_view w, const std::wstring& expected) {
    if (!isWord(w)) fail(expected);
    next();
}

std::wstring Parser::expectName(const std::wstring& what) {
    if (!isName()) fail(what);
    std::wstring name = cur().text;
    next();
    return name;
}

// ---- Sequences: the top level and blocks. Expressions end at ';', a line break or the closing bracket.

std::unique_ptr<Block> Parser::Program() {
    auto block = make<Block>(cur());
    block->scoped = false;
    parseSequence(*block, /*closing=*/nullptr);
    return block;
}

NodePtr Parser::NextTopLevel() {
    if (started_ && !(isPunct(L";") || cur().newlineBefore || atEnd())) fail(L"<end of statement>");
    while (isPunct(L";")) next();
    if (atEnd()) return nullptr;
    started_ = true;
    NodePtr e = parseExpr();
    // An expression that ends where the text stops being readable might have gone on: it does not run.
    if (cur().kind == Tok::Error) fail(L"<end of statement>");
    return e;
}

void Parser::parseSequence(Block& block, const wchar_t* closing) {
    for (;;) {
        while (isPunct(L";")) next();
        if (closing ? isPunct(closing) : atEnd()) return;
        if (closing && atEnd()) fail(closing);
        block.body.push_back(parseExpr());
        if (isPunct(L";") || cur().newlineBefore || atEnd() || (closing && isPunct(closing))) continue;
        fail(closing ? std::wstring(L"; or ") + closing : std::wstring(L"<end of statement>"));
    }
}

bool Parser::endsStatement() const { return atEnd() || cur().newlineBefore || isPunct(L";") || isPunct(L")"); }

// ---- Expressions.

NodePtr Parser::parseExpr() {
    const Nest nest(*this);
    const Token& t = cur();
    if (t.kind == Tok::Ident) {
        if (t.IsWord(L"if")) return parseIf();
        if (t.IsWord(L"while")) return parseWhile();
        if (t.IsWord(L"do")) return parseDoWhile();
        if (t.IsWord(L"for")) return parseFor();
        if (t.IsWord(L"case")) return parseCase();
        if (t.IsWord(L"try")) return parseTry();
        if (t.IsWord(L"fn") || t.IsWord(L"function") || t.IsWord(L"mapped")) return parseFn();
        if (t.IsWord(L"local") || t.IsWord(L"global") || t.IsWord(L"persistent")) return parseDecl();
        if (t.IsWord(L"return")) return parseReturn();
        if (t.IsWord(L"exit")) return parseExit();
        if (t.IsWord(L"continue")) {
            auto n = make<Continue>(t);
            next();
            return n;
        }
        if (t.IsWord(L"max")) return parseMax();
        if (auto kind = startsDefinition()) return parseDefinition(*kind);
        if (t.IsWord(L"when") && !peek().newlineBefore && peek().kind != Tok::Punct) return parseWhen();
        if (t.IsWord(L"set") && !peek().newlineBefore &&
            (peek().IsWord(L"animate") || peek().IsWord(L"time") || peek().IsWord(L"coordsys") ||
             peek().IsWord(L"about") || peek().IsWord(L"undo") || peek().IsWord(L"level")))
            return parseSetContext();
        if (startsContext()) return parseContext();
    }
    return parseAssign();
}

NodePtr Parser::parseAssign() {
    NodePtr left = parseOr();
    const Token& t = cur();
    if (t.kind == Tok::Punct &&
        (t.text == L"=" || t.text == L"+=" || t.text == L"-=" || t.text == L"*=" || t.text == L"/=")) {
        const bool dereference = left->kind == NodeKind::Unary && static_cast<const Unary&>(*left).op == L"*";
        if (left->kind != NodeKind::Var && left->kind != NodeKind::Property && left->kind != NodeKind::Index &&
            !dereference)
            fail(L"<end of statement>");
        // An error of the assignment is reported where its target is written.
        auto n = make<Assign>(t);
        n->line = left->line;
        n->column = left->column;
        n->op = t.text;
        next();
        n->target = std::move(left);
        n->value = parseExpr();
        return n;
    }
    return left;
}

NodePtr Parser::binary(const Token& at, std::wstring op, NodePtr l, NodePtr r) {
    auto n = make<Binary>(at);
    n->op = std::move(op);
    n->left = std::move(l);
    n->right = std::move(r);
    return n;
}

NodePtr Parser::parseOr() {
    NodePtr left = parseAnd();
    while (isWord(L"or")) {
        const Token t = cur();
        next();
        left = binary(t, L"or", std::move(left), parseAnd());
    }
    return left;
}

NodePtr Parser::parseAnd() {
    NodePtr left = parseNot();
    while (isWord(L"and")) {
        const Token t = cur();
        next();
        left = binary(t, L"and", std::move(left), parseNot());
    }
    return left;
}

NodePtr Parser::parseNot() {
    const Nest nest(*this);
    if (isWord(L"not")) {
        auto n = make<Unary>(cur());
        n->op = L"not";
        next();
        n->operand = parseNot();
        return n;
    }
    return parseCompare();
}

// A binary operator continues the expression only on the same line.
bool Parser::isOperator(std::initializer_list<const wchar_t*> ops) const {
    if (cur().kind != Tok::Punct || cur().newlineBefore) return false;
    for (const wchar_t* op : ops)
        if (cur().text == op) return true;
    return false;
}

NodePtr Parser::parseCompare() {
    NodePtr left = parseSum();
    if (isOperator({L"==", L"!=", L"<", L"<=", L">", L">="})) {
        const Token t = cur();
        next();
        left = binary(t, t.text, std::move(left), parseSum());
    }
    return left;
}

NodePtr Parser::parseSum() {
    NodePtr left = parseProduct();
    while (isOperator({L"+", L"-"})) {
        const Token t = cur();
        next();
        left = binary(t, t.text, std::move(left), parseProduct());
    }
    return left;
}

NodePtr Parser::parseProduct() {
    NodePtr left = parsePower();
    while (isOperator({L"*", L"/"})) {
        const Token t = cur();
        next();
        left = binary(t, t.text, std::move(left), parsePower());
    }
    return left;
}

NodePtr Parser::parsePower() {
    NodePtr left = parseAs();
    if (isOperator({L"^"})) {
        const Token t = cur();
        next();
        return binary(t, L"^", std::move(left), parsePower());
    }
    return left;
}

NodePtr Parser::parseAs() {
    NodePtr left = parseUnary();
    while (isWord(L"as")) {
        const Token t = cur();
        next();
        left = binary(t, L"as", std::move(left), parseUnary());
    }
    return left;
}

NodePtr Parser::parseUnary() {
    const Nest nest(*this);
    if (isPunct(L"-")) {
        const Token t = cur();
        next();
        NodePtr operand = parseUnary();
        if (operand->kind == NodeKind::Literal) {
            auto& lit = static_cast<Literal&>(*operand);
            if (lit.value.Is(Kind::Integer)) {
                lit.value = Value::Int(-lit.value.AsInt());
                return operand;
            }
            if (lit.value.Is(Kind::Float)) {
                lit.value = Value::Float(-lit.value.AsFloat());
                return operand;
            }
        }
        auto n = make<Unary>(t);
        n->op = L"-";
        n->operand = std::move(operand);
        return n;
    }
    if (startsReference()) return parseReference();
    if (isPunct(L"*")) {
        // `*r`: what the reference r refers to.
        auto n = make<Unary>(cur());
        n->op = L"*";
        next();
        n->operand = parseUnary();
        return n;
    }
    return parseCall();
}

// `-1` written with a blank before the minus and none after it, where an argument may stand.
bool Parser::startsNegativeArgument() const {
    const Token& t = cur();
    const Token& n = peek();
    return t.IsPunct(L"-") && t.spaceBefore && !n.spaceBefore &&
           (n.kind == Tok::Integer || n.kind == Tok::Float || n.kind == Tok::Time);
}

// `&x`, `&a[1]`, `&obj.prop`: a reference to what follows the ampersand.
bool Parser::startsReference() const {
    const Token& n = peek();
    return isPunct(L"&") && !n.spaceBefore && (n.kind == Tok::Ident || n.IsPunct(L"::"));
}

bool Parser::canStartArgument() const {
    const Token& t = cur();
    if (t.newlineBefore) return false;
    switch (t.kind) {
    case Tok::Integer:
    case Tok::Float:
    case Tok::Time:
    case Tok::String:
    case Tok::Name:
    case Tok::Keyword:
    case Tok::Path: return true;
    case Tok::Ident: return !IsReservedWord(t) || t.IsWord(L"on") || t.IsWord(L"off");
    case Tok::Punct:
        if (t.text == L"(" || t.text == L"#(" || t.text == L"#{" || t.text == L"?") return true;
        if (t.text == L"::") return peek().kind == Tok::Ident && !peek().spaceBefore;
        if (t.text == L"[") return t.spaceBefore;
        if (t.text == L"&") return startsReference();
        return startsNegativeArgument();
    case Tok::End:
    case Tok::Error: return false;
    }
    return false;
}

namespace {
bool IsCallable(const Node& n) {
    return n.kind != NodeKind::Literal && n.kind != NodeKind::ArrayLit && n.kind != NodeKind::BitArrayLit &&
           n.kind != NodeKind::PointLit && n.kind != NodeKind::RefArg;
}
}  // namespace

NodePtr Parser::parseCall() {
    const Token start = cur();
    NodePtr callee = parsePostfix();
    if (!IsCallable(*callee) || !canStartArgument()) return callee;
    auto call = make<Call>(start);
    call->callee = std::move(callee);
    const bool firstIsNegative = startsNegativeArgument();
    while (canStartArgument()) {
        if (cur().kind == Tok::Keyword) {
            call->keywords.push_back(parseKeywordArg());
        } else {
            call->args.push_back(parseArgument());
        }
    }
    call->ambiguousMinus = firstIsNegative && call->args.size() == 1 && call->keywords.empty();
    return call;
}

// An argument: an operand with its property, index and () suffixes, a negative number or a reference.
NodePtr Parser::parseArgument() {
    if (isPunct(L"-") && !peek().spaceBefore &&
        (peek().kind == Tok::Integer || peek().kind == Tok::Float || peek().kind == Tok::Time)) {
        next();
        NodePtr lit = parseFactor();
        auto& l = static_cast<Literal&>(*lit);
        if (l.value.Is(Kind::Integer)) l.value = Value::Int(-l.value.AsInt());
        else if (l.value.Is(Kind::Float)) l.value = Value::Float(-l.value.AsFloat());
        else l.value = Value::Time(-l.value.AsTime());
        return lit;
    }
    if (startsReference()) return parseReference();
    return parsePostfix();
}

NodePtr Parser::parseReference() {
    auto r = make<RefArg>(cur());
    next();  // &
    r->target = parsePostfix();
    const NodeKind k = r->target->kind;
    if (k != NodeKind::Var && k != NodeKind::Property && k != NodeKind::Index) fail(L"<variable, property or item>");
    return r;
}

// caseLabel: a `name:` keyword token after a dot is the last property of a case label (`x.kind: ...`).
NodePtr Parser::parsePostfix(bool caseLabel) {
    NodePtr e = parseFactor();
    for (;;) {
        const Token& t = cur();
        if (t.IsPunct(L".") && !t.newlineBefore) {
            next();
            const bool labelEnd = caseLabel && cur().kind == Tok::Keyword;
            if (cur().kind != Tok::Ident && !labelEnd) fail(L"<property name>");
            auto p = make<Property>(t);
            p->object = std::move(e);
            p->name = cur().text;
            next();
            e = std::move(p);
            if (labelEnd) {
                // The keyword token carried the label's colon.
                --pos_;
                toks_[pos_].kind = Tok::Punct;
                toks_[pos_].text = L":";
                return e;
            }
        } else if (t.IsPunct(L"[") && !t.spaceBefore) {
            next();
            auto ix = make<Index>(t);
            ix->object = std::move(e);
            ix->index = parseExpr();
            expectPunct(L"]");
            e = std::move(ix);
        } else if (t.IsPunct(L"(") && peek().IsPunct(L")") && !t.newlineBefore && IsCallable(*e)) {
            next();
            next();
            auto c = make<Call>(t);
            c->callee = std::move(e);
            e = std::move(c);
        } else {
            return e;
        }
    }
}

NodePtr Parser::literal(const Token& t, Value v) {
    auto n = make<Literal>(t);
    n->value = std::move(v);
    next();
    return n;
}

NodePtr Parser::parseFactor() {
    const Token& t = cur();
    switch (t.kind) {
    case Tok::Integer: return literal(t, Value::Int(int(t.number)));
    case Tok::Float: return literal(t, Value::Float(float(t.number)));
    case Tok::Time: return literal(t, Value::Time(TimeValue(t.number)));
    case Tok::String: return literal(t, Value::String(t.text));
    case Tok::Name: return literal(t, Value::Name(t.text));
    case Tok::Path: {
        auto p = make<Path>(t);
        p->path = t.text;
        next();
        return p;
    }
    case Tok::Ident: {
        if (t.IsWord(L"true") || t.IsWord(L"on")) return literal(t, Value::Bool(true));
        if (t.IsWord(L"false") || t.IsWord(L"off")) return literal(t, Value::Bool(false));
        if (t.IsWord(L"undefined")) return literal(t, Value::Undefined());
        if (t.IsWord(L"ok")) return literal(t, Value::Ok());
        if (t.IsWord(L"unsupplied")) return literal(t, Value::Unsupplied());
        if (IsReservedWord(t)) fail(L"<factor>");
        auto v = make<Var>(t);
        v->name = t.text;
        v->key = FoldCase(t.text);
        next();
        return v;
    }
    case Tok::Punct:
        if (t.text == L"(") return parseBlock();
        if (t.text == L"#(") return parseArray();
        if (t.text == L"#{") return parseBitArray();
        if (t.text == L"[") return parsePoint();
        if (t.text == L"?") {
            auto n = make<LastResult>(t);
            next();
            return n;
        }
        if (t.text == L"::") {
            next();
            if (!isName() || cur().spaceBefore) fail(L"<global name>");
            auto v = make<Var>(t);
            v->name = cur().text;
            v->key = FoldCase(cur().text);
            v->global = true;
            next();
            return v;
        }
        break;
    default: break;
    }
    fail(L"<factor>");
}

NodePtr Parser::parseBlock() {
    auto b = make<Block>(cur());
    next();
    parseSequence(*b, L")");
    next();
    return b;
}

NodePtr Parser::parseArray() {
    auto a = make<ArrayLit>(cur());
    next();
    if (isPunct(L")")) {
        next();
        return a;
    }
    for (;;) {
        a->items.push_back(parseExpr());
        if (isPunct(L")")) break;
        if (!isPunct(L",")) fail(L", or )");
        next();
    }
    next();
    return a;
}

NodePtr Parser::parseBitArray() {
    auto a = make<BitArrayLit>(cur());
    next();
    if (isPunct(L"}")) {
        next();
        return a;
    }
    for (;;) {
        BitArrayLit::Item item;
        item.from = parseExpr();
        if (isPunct(L"..")) {
            next();
            item.to = parseExpr();
        }
        a->items.push_back(std::move(item));
        if (isPunct(L"}")) break;
        if (!isPunct(L",")) fail(L", or }");
        next();
    }
    next();
    return a;
}

NodePtr Parser::parsePoint() {
    auto p = make<PointLit>(cur());
    next();
    p->components.push_back(parseExpr());
    expectPunct(L",");
    p->components.push_back(parseExpr());
    if (isPunct(L",")) {
        next();
        p->components.push_back(parseExpr());
    }
    expectPunct(L"]");
    return p;
}

// ---- Control forms.

NodePtr Parser::parseIf() {
    auto n = make<If>(cur());
    next();
    n->test = parseExpr();
    if (isWord(L"then")) {
        next();
        n->then = parseExpr();
        if (isWord(L"else")) {
            next();
            n->otherwise = parseExpr();
        }
    } else if (isWord(L"do")) {
        next();
        n->then = parseExpr();
    } else {
        fail(L"then or do");
    }
    return n;
}

NodePtr Parser::parseWhile() {
    auto n = make<While>(cur());
    next();
    n->test = parseExpr();
    expectWord(L"do", L"do");
    n->body = parseExpr();
    return n;
}

NodePtr Parser::parseDoWhile() {
    auto n = make<DoWhile>(cur());
    next();
    n->body = parseExpr();
    expectWord(L"while", L"while");
    n->test = parseExpr();
    return n;
}

NodePtr Parser::parseFor() {
    auto n = make<For>(cur());
    next();
    if (!isName()) fail(L"<loop variable>");
    n->var = FoldCase(cur().text);
    next();
    // `for v = a to b` and `for v in a to b` count; `for v in c` visits the items of c.
    if (isPunct(L"=") || isWord(L"in")) {
        const bool in = isWord(L"in");
        next();
        NodePtr first = parseExpr();
        if (isWord(L"to")) {
            next();
            n->from = std::move(first);
            n->to = parseExpr();
            if (isWord(L"by")) {
                next();
                n->step = parseExpr();
            }
        } else if (in) {
            n->in = std::move(first);
        } else {
            fail(L"to");
        }
    } else {
        fail(L"= or in");
    }
    if (isWord(L"where")) {
        next();
        n->where = parseExpr();
    }
    if (isWord(L"while")) {
        next();
        n->whileTest = parseExpr();
    }
    if (isWord(L"do")) {
        next();
    } else if (isWord(L"collect")) {
        n->collect = true;
        next();
    } else {
        fail(L"do or collect");
    }
    n->body = parseExpr();
    return n;
}

NodePtr Parser::parseCase() {
    auto n = make<Case>(cur());
    next();
    if (!isWord(L"of")) n->subject = parseExpr();
    expectWord(L"of", L"of");
    expectPunct(L"(");
    for (;;) {
        while (isPunct(L";")) next();
        if (isPunct(L")")) break;
        if (atEnd()) fail(L")");
        Case::Item item;
        if (cur().kind == Tok::Keyword && EqualsNoCase(cur().text, L"default")) {
            next();
        } else {
            item.label = parseCaseLabel();
        }
        item.body = parseExpr();
        n->items.push_back(std::move(item));
        if (!(isPunct(L";") || isPunct(L")") || cur().newlineBefore)) fail(L"; or )");
    }
    next();
    return n;
}

// A label with its colon: a factor (`1:`, `#a:`, `(x > 2):`, `obj.kind:`) or a word written with its colon
// (`true:`, `someVar:`).
NodePtr Parser::parseCaseLabel() {
    if (cur().kind == Tok::Keyword) {
        const Token t = cur();
        const std::wstring word = FoldCase(t.text);
        NodePtr label;
        if (word == L"true" || word == L"on") label = literal(t, Value::Bool(true));
        else if (word == L"false" || word == L"off") label = literal(t, Value::Bool(false));
        else if (word == L"undefined") label = literal(t, Value::Undefined());
        else if (word == L"ok") label = literal(t, Value::Ok());
        else {
            auto v = make<Var>(t);
            v->name = t.text;
            v->key = word;
            next();
            label = std::move(v);
        }
        return label;
    }
    NodePtr label;
    if (isPunct(L"-") && !peek().spaceBefore) label = parseArgument();
    else label = parsePostfix(/*caseLabel=*/true);
    expectPunct(L":");
    return label;
}

NodePtr Parser::parseTry() {
    auto n = make<Try>(cur());
    next();
    n->body = parseExpr();
    // `try (...) ; catch (...)` on one line.
    while (isPunct(L";") && peek().IsWord(L"catch")) next();
    expectWord(L"catch", L"catch");
    n->handler = parseExpr();
    return n;
}

NodePtr Parser::parseFn() {
    auto n = make<FnDef>(cur());
    if (isWord(L"mapped")) {
        n->mapped = true;
        next();
    }
    if (!isWord(L"fn") && !isWord(L"function")) fail(L"fn");
    next();
    if (!isName()) fail(L"<function name>");
    n->name = cur().text;
    next();
    if (isPunct(L"(") && peek().IsPunct(L")")) {
        next();
        next();
    }
    for (;;) {
        const bool byRef = isPunct(L"&") && peek().kind == Tok::Ident && !peek().spaceBefore;
        if (byRef) next();
        if (isName()) {
            if (!n->keywords.empty()) fail(L"=");
            n->params.push_back(FoldCase(cur().text));
            n->byReference.push_back(byRef);
            next();
        } else if (cur().kind == Tok::Keyword) {
            FnDef::KeywordParam kp{FoldCase(cur().text), cur().text, nullptr};
            next();
            if (!isPunct(L"=") && cur().kind != Tok::Keyword) kp.defaultValue = parseArgument();
            n->keywords.push_back(std::move(kp));
        } else {
            if (byRef) fail(L"<parameter name>");
            break;
        }
    }
    expectPunct(L"=");
    n->body = parseExpr();
    return n;
}

NodePtr Parser::parseDecl() {
    auto n = make<Decl>(cur());
    if (isWord(L"persistent")) {
        next();
        if (!isWord(L"global")) fail(L"global");
    }
    n->global = isWord(L"global");
    next();
    for (;;) {
        if (!isName()) fail(L"<variable name>");
        Decl::Item item{FoldCase(cur().text), nullptr};
        next();
        if (isPunct(L"=")) {
            next();
            item.init = parseExpr();
        }
        n->items.push_back(std::move(item));
        if (!isPunct(L",")) break;
        next();
    }
    return n;
}

NodePtr Parser::parseReturn() {
    auto n = make<Return>(cur());
    next();
    if (!endsStatement()) n->value = parseExpr();
    return n;
}

NodePtr Parser::parseExit() {
    auto n = make<Exit>(cur());
    next();
    if (isWord(L"with")) {
        next();
        n->value = parseExpr();
    }
    return n;
}

NodePtr Parser::parseMax() {
    auto n = make<MaxCmd>(cur());
    next();
    std::wstring command;
    while (cur().kind == Tok::Ident && !cur().newlineBefore) {
        if (!command.empty()) command += L' ';
        command += FoldCase(cur().text);
        next();
    }
    if (command.empty()) fail(L"<max command>");
    n->command = std::move(command);
    return n;
}

// on/off, or any operand that answers true or false.
NodePtr Parser::parseSwitch() {
    if (isWord(L"on") || isWord(L"off")) return literal(cur(), Value::Bool(isWord(L"on")));
    return parseArgument();
}

// A context starts an expression: undo, animate, with, at time, at level, in coordsys (and in <node>),
// coordsys, about.
bool Parser::startsContext() const {
    const Token& n = peek();
    const bool sameLine = !n.newlineBefore && n.kind != Tok::End;
    if (isWord(L"undo") || isWord(L"animate") || isWord(L"with")) return true;
    if (isWord(L"at")) return n.IsWord(L"time") || n.IsWord(L"level");
    if (isWord(L"in")) return sameLine;
    if (isWord(L"coordsys") || isWord(L"about"))
        return sameLine && (n.kind == Tok::Ident || n.kind == Tok::Path || n.IsPunct(L"[") || n.IsPunct(L"("));
    return false;
}

// One clause of a context; false when the cursor holds none.
bool Parser::parseClause(Context::Clause& clause, bool with) {
    if (isWord(L"undo")) {
        clause.what = L"undo";
        next();
        if (cur().kind == Tok::String || cur().kind == Tok::Name) clause.label = parseFactor();
        clause.value = parseSwitch();
    } else if (isWord(L"animate")) {
        clause.what = L"animate";
        next();
        clause.value = parseSwitch();
    } else if (isWord(L"at") && peek().IsWord(L"time")) {
        next();
        next();
        clause.what = L"time";
        clause.value = parseArgument();
    } else if (isWord(L"at") && peek().IsWord(L"level")) {
        next();
        next();
        clause.what = L"level";
        clause.value = parseArgument();
    } else if (isWord(L"coordsys") || (isWord(L"in") && peek().IsWord(L"coordsys"))) {
        if (isWord(L"in")) next();
        next();
        clause.what = L"coordsys";
        if (IsOneOf(cur(), kCoordSystems)) clause.value = literal(cur(), Value::Name(FoldCase(cur().text)));
        else clause.value = parseArgument();
    } else if (isWord(L"about")) {
        next();
        clause.what = L"about";
        if (IsOneOf(cur(), kCentres)) clause.value = literal(cur(), Value::Name(FoldCase(cur().text)));
        else clause.value = parseArgument();
    } else if (isWord(L"in")) {
        // `in <node> expr`: the parent of what the body creates.
        next();
        clause.what = L"in";
        clause.value = parseArgument();
    } else if (with && isName()) {
        // Any other switch of `with` (redraw, quiet, printAllElements, defaultAction ...).
        clause.what = FoldCase(cur().text);
        next();
        clause.value = parseSwitch();
    } else {
        return false;
    }
    return true;
}

NodePtr Parser::parseContext() {
    auto n = make<Context>(cur());
    const bool with = isWord(L"with");
    if (with) next();
    for (;;) {
        Context::Clause clause;
        if (!parseClause(clause, with)) fail(L"undo, animate, at time, coordsys or about");
        n->clauses.push_back(std::move(clause));
        if (!isPunct(L",")) break;
        next();
    }
    n->body = parseExpr();
    return n;
}

NodePtr Parser::parseSetContext() {
    auto n = make<SetContext>(cur());
    next();  // set
    if (isWord(L"coordsys") || isWord(L"about") || isWord(L"animate") || isWord(L"undo")) {
        parseClause(n->clause, false);
    } else if (isWord(L"time") || isWord(L"level")) {
        n->clause.what = FoldCase(cur().text);
        next();
        n->clause.value = parseArgument();
    } else {
        fail(L"animate, time, coordsys, about, undo or level");
    }
    return n;
}

NodePtr Parser::parseWhen() {
    auto n = make<When>(cur());
    next();  // when
    static constexpr std::array kAttributes = {L"topology", L"geometry",   L"names",      L"transform",
                                               L"select",   L"parameters", L"subAnimStructure", L"controller",
                                               L"children", L"parent",     L"any"};
    if (IsOneOf(cur(), kAttributes) && !peek().IsWord(L"deleted")) {
        n->attribute = FoldCase(cur().text);
        next();
        n->objects = parseArgument();
        expectWord(L"changes", L"changes");
    } else {
        n->objects = parseArgument();
        expectWord(L"deleted", L"changes or deleted");
        n->attribute = L"deleted";
    }
    parseKeywordArgs(n->keywords);
    if (isName() && !isWord(L"do")) {
        n->param = FoldCase(cur().text);
        next();
    }
    expectWord(L"do", L"do");
    n->body = parseExpr();
    return n;
}

// ---- Entry points.

std::shared_ptr<ast::Program> Parse(std::wstring_view source, const std::wstring& sourceName) {
    auto program = std::make_shared<ast::Program>();
    program->source = std::wstring(source);
    program->sourceName = sourceName;
    try {
        Parser parser(Tokenize(source));
        program->top = parser.Program();
    } catch (ScriptError& e) {
        e.SetSource(sourceName, SourceLine(source, e.Line()));
        throw;
    }
    return program;
}

struct ScriptReader::State {
    Parser parser;
};

ScriptReader::ScriptReader(std::shared_ptr<ast::Program> program) : program_(std::move(program)) {
    LexResult lexed = TokenizeLenient(program_->source);
    state_ = std::make_unique<State>(State{Parser(std::move(lexed.tokens), std::move(lexed.error))});
    auto top = std::make_unique<Block>();
    top->line = top->column = 1;
    top->scoped = false;
    program_->top = std::move(top);
}

ScriptReader::~ScriptReader() = default;

const ast::Node* ScriptReader::Next() {
    try {
        NodePtr node = state_->parser.NextTopLevel();
        if (!node) return nullptr;
        program_->top->body.push_back(std::move(node));
        return program_->top->body.back().get();
    } catch (ScriptError& e) {
        e.SetSource(program_->sourceName, SourceLine(program_->source, e.Line()));
        throw;
    }
}

bool IsIncomplete(std::wstring_view source) {
    std::vector<Token> tokens;
    try {
        tokens = Tokenize(source);
    } catch (const ScriptError& e) {
        // An unterminated string or comment goes on on the next line.
        return e.Text().find(L"at end of script") != std::wstring::npos;
    }
    Parser parser(std::move(tokens));
    try {
        parser.Program();
    } catch (const ScriptError&) {
        return parser.FailedAtEnd();
    }
    return false;
}

}  // namespace hostrt::mxs
