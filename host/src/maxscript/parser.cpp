// The MAXScript parser: recursive descent over the token list.
//
// Precedence, loosest first: assignment; or; and; not; comparisons; + -; * /; ^; as; unary minus; calls by
// juxtaposition (`f a b key:v`, ending at a line break); property access, indexing and `()` calls.
#include "maxscript/parser.h"

#include "maxscript/errors.h"
#include "maxscript/lexer.h"

#include <array>

namespace hostrt::mxs {

namespace {

using namespace ast;

constexpr std::array kReserved = {
    L"and",   L"as",     L"at",   L"by",     L"case",       L"catch",  L"collect", L"continue", L"do",
    L"else",  L"exit",   L"fn",   L"for",    L"function",   L"global", L"if",      L"in",       L"local",
    L"mapped", L"max",   L"not",  L"of",     L"off",        L"on",     L"or",      L"persistent", L"return",
    L"then",  L"to",     L"try",  L"undo",   L"where",      L"while",  L"with",    L"animate",
};

bool IsReserved(const Token& t) {
    if (t.kind != Tok::Ident) return false;
    for (const wchar_t* w : kReserved)
        if (EqualsNoCase(t.text, w)) return true;
    return false;
}

class Parser {
public:
    Parser(std::vector<Token> tokens) : toks_(std::move(tokens)) {}

    std::unique_ptr<Block> Program() {
        auto block = make<Block>(cur());
        block->scoped = false;
        parseSequence(*block, /*closing=*/nullptr);
        return block;
    }

    bool FailedAtEnd() const { return failedAtEnd_; }

private:
    // ---- Token cursor.
    const Token& cur() const { return toks_[pos_]; }
    const Token& peek(std::size_t ahead = 1) const {
        return toks_[std::min(pos_ + ahead, toks_.size() - 1)];
    }
    void next() {
        if (pos_ + 1 < toks_.size()) ++pos_;
    }
    bool atEnd() const { return cur().kind == Tok::End; }
    bool isPunct(std::wstring_view p) const { return cur().IsPunct(p); }
    bool isWord(std::wstring_view w) const { return cur().IsWord(w); }

    static std::wstring describe(const Token& t) {
        switch (t.kind) {
        case Tok::End: return L"end of script";
        case Tok::String: return L"\"" + t.text + L"\"";
        case Tok::Name: return L"#" + t.text;
        case Tok::Keyword: return L"keyword parameter";
        case Tok::Path: return L"$" + t.text;
        default: return t.text;
        }
    }

    [[noreturn]] void fail(const std::wstring& expected) {
        const Token& t = cur();
        failedAtEnd_ = t.kind == Tok::End;
        ScriptError e = SyntaxError(describe(t), expected);
        e.SetLocation(t.line, t.column);
        throw e;
    }

    void expectPunct(std::wstring_view p) {
        if (!isPunct(p)) fail(std::wstring(p));
        next();
    }
    void expectWord(std::wstring_view w, const std::wstring& expected) {
        if (!isWord(w)) fail(expected);
        next();
    }

    template <class T> std::unique_ptr<T> make(const Token& at) {
        auto n = std::make_unique<T>();
        n->line = at.line;
        n->column = at.column;
        return n;
    }

    // ---- Sequences: the top level and blocks. Expressions end at ';', a line break or the closing bracket.
    void parseSequence(Block& block, const wchar_t* closing) {
        for (;;) {
            while (isPunct(L";")) next();
            if (closing ? isPunct(closing) : atEnd()) return;
            if (closing && atEnd()) fail(closing);
            block.body.push_back(parseExpr());
            if (isPunct(L";") || cur().newlineBefore || atEnd() || (closing && isPunct(closing))) continue;
            fail(closing ? std::wstring(L"; or ") + closing : std::wstring(L"<end of statement>"));
        }
    }

    // ---- Expressions.
    NodePtr parseExpr() {
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
            for (const wchar_t* unsupported : {L"struct", L"rollout", L"utility", L"plugin", L"macroScript",
                                               L"rcmenu", L"tool"})
                if (t.IsWord(unsupported) && peek().kind == Tok::Ident && !peek().newlineBefore)
                    fail(L"<expression> (" + std::wstring(unsupported) + L" definitions are not supported by this host)");
            if (t.IsWord(L"undo") || t.IsWord(L"animate") || t.IsWord(L"with") ||
                (t.IsWord(L"at") && peek().IsWord(L"time")))
                return parseContext();
        }
        return parseAssign();
    }

    NodePtr parseAssign() {
        NodePtr left = parseOr();
        const Token& t = cur();
        if (t.kind == Tok::Punct &&
            (t.text == L"=" || t.text == L"+=" || t.text == L"-=" || t.text == L"*=" || t.text == L"/=")) {
            if (left->kind != NodeKind::Var && left->kind != NodeKind::Property && left->kind != NodeKind::Index)
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

    NodePtr binary(const Token& at, std::wstring op, NodePtr l, NodePtr r) {
        auto n = make<Binary>(at);
        n->op = std::move(op);
        n->left = std::move(l);
        n->right = std::move(r);
        return n;
    }

    NodePtr parseOr() {
        NodePtr left = parseAnd();
        while (isWord(L"or")) {
            const Token t = cur();
            next();
            left = binary(t, L"or", std::move(left), parseAnd());
        }
        return left;
    }

    NodePtr parseAnd() {
        NodePtr left = parseNot();
        while (isWord(L"and")) {
            const Token t = cur();
            next();
            left = binary(t, L"and", std::move(left), parseNot());
        }
        return left;
    }

    NodePtr parseNot() {
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
    bool isOperator(std::initializer_list<const wchar_t*> ops) const {
        if (cur().kind != Tok::Punct || cur().newlineBefore) return false;
        for (const wchar_t* op : ops)
            if (cur().text == op) return true;
        return false;
    }

    NodePtr parseCompare() {
        NodePtr left = parseSum();
        if (isOperator({L"==", L"!=", L"<", L"<=", L">", L">="})) {
            const Token t = cur();
            next();
            left = binary(t, t.text, std::move(left), parseSum());
        }
        return left;
    }

    NodePtr parseSum() {
        NodePtr left = parseProduct();
        while (isOperator({L"+", L"-"})) {
            const Token t = cur();
            next();
            left = binary(t, t.text, std::move(left), parseProduct());
        }
        return left;
    }

    NodePtr parseProduct() {
        NodePtr left = parsePower();
        while (isOperator({L"*", L"/"})) {
            const Token t = cur();
            next();
            left = binary(t, t.text, std::move(left), parsePower());
        }
        return left;
    }

    NodePtr parsePower() {
        NodePtr left = parseAs();
        if (isOperator({L"^"})) {
            const Token t = cur();
            next();
            return binary(t, L"^", std::move(left), parsePower());
        }
        return left;
    }

    NodePtr parseAs() {
        NodePtr left = parseUnary();
        while (isWord(L"as")) {
            const Token t = cur();
            next();
            left = binary(t, L"as", std::move(left), parseUnary());
        }
        return left;
    }

    NodePtr parseUnary() {
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
        return parseCall();
    }

    // `-1` written with a blank before the minus and none after it, where an argument may stand.
    bool startsNegativeArgument() const {
        const Token& t = cur();
        const Token& n = peek();
        return t.IsPunct(L"-") && t.spaceBefore && !n.spaceBefore &&
               (n.kind == Tok::Integer || n.kind == Tok::Float || n.kind == Tok::Time);
    }

    bool canStartArgument() const {
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
        case Tok::Ident: return !IsReserved(t);
        case Tok::Punct:
            if (t.text == L"(" || t.text == L"#(" || t.text == L"#{") return true;
            if (t.text == L"[") return t.spaceBefore;
            return startsNegativeArgument();
        case Tok::End: return false;
        }
        return false;
    }

    static bool isCallable(const Node& n) {
        return n.kind != NodeKind::Literal && n.kind != NodeKind::ArrayLit && n.kind != NodeKind::BitArrayLit &&
               n.kind != NodeKind::PointLit;
    }

    NodePtr parseCall() {
        const Token start = cur();
        NodePtr callee = parsePostfix();
        if (!isCallable(*callee) || !canStartArgument()) return callee;
        auto call = make<Call>(start);
        call->callee = std::move(callee);
        const bool firstIsNegative = startsNegativeArgument();
        while (canStartArgument()) {
            if (cur().kind == Tok::Keyword) {
                KeywordArg kw{cur().text, nullptr};
                next();
                kw.value = parseArgument();
                call->keywords.push_back(std::move(kw));
            } else {
                call->args.push_back(parseArgument());
            }
        }
        call->ambiguousMinus = firstIsNegative && call->args.size() == 1 && call->keywords.empty();
        return call;
    }

    // An argument: an operand with its property, index and () suffixes, or a negative number.
    NodePtr parseArgument() {
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
        return parsePostfix();
    }

    NodePtr parsePostfix() {
        NodePtr e = parseFactor();
        for (;;) {
            const Token& t = cur();
            if (t.IsPunct(L".") && !t.newlineBefore) {
                next();
                if (cur().kind != Tok::Ident) fail(L"<property name>");
                auto p = make<Property>(t);
                p->object = std::move(e);
                p->name = cur().text;
                next();
                e = std::move(p);
            } else if (t.IsPunct(L"[") && !t.spaceBefore) {
                next();
                auto ix = make<Index>(t);
                ix->object = std::move(e);
                ix->index = parseExpr();
                expectPunct(L"]");
                e = std::move(ix);
            } else if (t.IsPunct(L"(") && peek().IsPunct(L")") && !t.newlineBefore && isCallable(*e)) {
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

    NodePtr literal(const Token& t, Value v) {
        auto n = make<Literal>(t);
        n->value = std::move(v);
        next();
        return n;
    }

    NodePtr parseFactor() {
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
            if (t.IsWord(L"true")) return literal(t, Value::Bool(true));
            if (t.IsWord(L"false")) return literal(t, Value::Bool(false));
            if (t.IsWord(L"undefined")) return literal(t, Value::Undefined());
            if (t.IsWord(L"ok")) return literal(t, Value::Ok());
            if (t.IsWord(L"unsupplied")) return literal(t, Value::Unsupplied());
            if (IsReserved(t)) fail(L"<factor>");
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
            break;
        default: break;
        }
        fail(L"<factor>");
    }

    NodePtr parseBlock() {
        auto b = make<Block>(cur());
        next();
        parseSequence(*b, L")");
        next();
        return b;
    }

    NodePtr parseArray() {
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

    NodePtr parseBitArray() {
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

    NodePtr parsePoint() {
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
    NodePtr parseIf() {
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

    NodePtr parseWhile() {
        auto n = make<While>(cur());
        next();
        n->test = parseExpr();
        expectWord(L"do", L"do");
        n->body = parseExpr();
        return n;
    }

    NodePtr parseDoWhile() {
        auto n = make<DoWhile>(cur());
        next();
        n->body = parseExpr();
        expectWord(L"while", L"while");
        n->test = parseExpr();
        return n;
    }

    NodePtr parseFor() {
        auto n = make<For>(cur());
        next();
        if (cur().kind != Tok::Ident || IsReserved(cur())) fail(L"<loop variable>");
        n->var = FoldCase(cur().text);
        next();
        if (isPunct(L"=")) {
            next();
            n->from = parseExpr();
            expectWord(L"to", L"to");
            n->to = parseExpr();
            if (isWord(L"by")) {
                next();
                n->step = parseExpr();
            }
        } else if (isWord(L"in")) {
            next();
            n->in = parseExpr();
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

    NodePtr parseCase() {
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
            if (cur().kind == Tok::Keyword) {
                if (!EqualsNoCase(cur().text, L"default")) {
                    auto v = make<Var>(cur());
                    v->name = cur().text;
                    v->key = FoldCase(cur().text);
                    item.label = std::move(v);
                }
                next();
            } else {
                item.label = parseArgument();
                expectPunct(L":");
            }
            item.body = parseExpr();
            n->items.push_back(std::move(item));
            if (!(isPunct(L";") || isPunct(L")") || cur().newlineBefore)) fail(L"; or )");
        }
        next();
        return n;
    }

    NodePtr parseTry() {
        auto n = make<Try>(cur());
        next();
        n->body = parseExpr();
        expectWord(L"catch", L"catch");
        n->handler = parseExpr();
        return n;
    }

    NodePtr parseFn() {
        auto n = make<FnDef>(cur());
        if (isWord(L"mapped")) next();
        if (!isWord(L"fn") && !isWord(L"function")) fail(L"fn");
        next();
        if (cur().kind != Tok::Ident || IsReserved(cur())) fail(L"<function name>");
        n->name = cur().text;
        next();
        if (isPunct(L"(") && peek().IsPunct(L")")) {
            next();
            next();
        }
        for (;;) {
            if (cur().kind == Tok::Ident && !IsReserved(cur())) {
                if (!n->keywords.empty()) fail(L"=");
                n->params.push_back(FoldCase(cur().text));
                next();
            } else if (cur().kind == Tok::Keyword) {
                FnDef::KeywordParam kp{FoldCase(cur().text), cur().text, nullptr};
                next();
                if (!isPunct(L"=") && cur().kind != Tok::Keyword) kp.defaultValue = parseArgument();
                n->keywords.push_back(std::move(kp));
            } else {
                break;
            }
        }
        expectPunct(L"=");
        n->body = parseExpr();
        return n;
    }

    NodePtr parseDecl() {
        auto n = make<Decl>(cur());
        if (isWord(L"persistent")) {
            next();
            if (!isWord(L"global")) fail(L"global");
        }
        n->global = isWord(L"global");
        next();
        for (;;) {
            if (cur().kind != Tok::Ident || IsReserved(cur())) fail(L"<variable name>");
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

    bool endsStatement() const {
        return atEnd() || cur().newlineBefore || isPunct(L";") || isPunct(L")");
    }

    NodePtr parseReturn() {
        auto n = make<Return>(cur());
        next();
        if (!endsStatement()) n->value = parseExpr();
        return n;
    }

    NodePtr parseExit() {
        auto n = make<Exit>(cur());
        next();
        if (isWord(L"with")) {
            next();
            n->value = parseExpr();
        }
        return n;
    }

    NodePtr parseMax() {
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
    NodePtr parseSwitch() {
        if (isWord(L"on") || isWord(L"off")) return literal(cur(), Value::Bool(isWord(L"on")));
        return parseArgument();
    }

    NodePtr parseContext() {
        auto n = make<Context>(cur());
        const bool with = isWord(L"with");
        if (with) next();
        for (;;) {
            Context::Clause clause;
            if (isWord(L"undo")) {
                clause.what = L"undo";
                next();
                if (cur().kind == Tok::String || cur().kind == Tok::Name) clause.label = parseFactor();
                clause.value = parseSwitch();
            } else if (isWord(L"animate")) {
                clause.what = L"animate";
                next();
                clause.value = parseSwitch();
            } else if (isWord(L"at")) {
                next();
                expectWord(L"time", L"time");
                clause.what = L"time";
                clause.value = parseArgument();
            } else if (with && (isWord(L"redraw") || isWord(L"quiet"))) {
                clause.what = FoldCase(cur().text);
                next();
                clause.value = parseSwitch();
            } else {
                fail(L"undo, animate or at time");
            }
            n->clauses.push_back(std::move(clause));
            if (!isPunct(L",")) break;
            next();
        }
        n->body = parseExpr();
        return n;
    }

    std::vector<Token> toks_;
    std::size_t pos_ = 0;
    bool failedAtEnd_ = false;
};

}  // namespace

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
