// The MAXScript parser's recursive descent, shared by its two halves: expressions and control forms
// (parser.cpp) and definitions (parser_definitions.cpp). Internal to the parser.
#pragma once

#include "maxscript/ast.h"
#include "maxscript/errors.h"
#include "maxscript/lexer.h"

#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace hostrt::mxs {

// Whether t is one of the words that cannot name a variable.
bool IsReservedWord(const Token& t);

class Parser {
public:
    // tokens may end with an Error token (a lenient lexer run); lexError is then the error it stands for.
    explicit Parser(std::vector<Token> tokens, std::unique_ptr<ScriptError> lexError = nullptr)
        : toks_(std::move(tokens)), lexError_(std::move(lexError)) {}

    // The whole text as one unscoped block.
    std::unique_ptr<ast::Block> Program();
    // The next top-level expression; null at the end of the text. A text that does not go on as an
    // expression sequence fails here, after the expressions before it were handed out.
    ast::NodePtr NextTopLevel();

    bool FailedAtEnd() const { return failedAtEnd_; }

private:
    using NodePtr = ast::NodePtr;

    // ---- Token cursor.
    const Token& cur() const { return toks_[pos_]; }
    const Token& peek(std::size_t ahead = 1) const { return toks_[std::min(pos_ + ahead, toks_.size() - 1)]; }
    void next() {
        if (pos_ + 1 < toks_.size()) ++pos_;
    }
    bool atEnd() const { return cur().kind == Tok::End; }
    bool isPunct(std::wstring_view p) const { return cur().IsPunct(p); }
    bool isWord(std::wstring_view w) const { return cur().IsWord(w); }
    // An identifier that can name something (no reserved word).
    bool isName() const { return cur().kind == Tok::Ident && !IsReservedWord(cur()); }

    static std::wstring describe(const Token& t);
    [[noreturn]] void fail(const std::wstring& expected);
    void expectPunct(std::wstring_view p);
    void expectWord(std::wstring_view w, const std::wstring& expected);
    // The name at the cursor (folded in key when given), else a failure expecting what.
    std::wstring expectName(const std::wstring& what);

    template <class T> std::unique_ptr<T> make(const Token& at) {
        auto n = std::make_unique<T>();
        n->line = at.line;
        n->column = at.column;
        return n;
    }

    // ---- Sequences and expressions (parser.cpp).
    void parseSequence(ast::Block& block, const wchar_t* closing);
    bool endsStatement() const;
    NodePtr parseExpr();
    NodePtr parseAssign();
    NodePtr binary(const Token& at, std::wstring op, NodePtr l, NodePtr r);
    NodePtr parseOr();
    NodePtr parseAnd();
    NodePtr parseNot();
    bool isOperator(std::initializer_list<const wchar_t*> ops) const;
    NodePtr parseCompare();
    NodePtr parseSum();
    NodePtr parseProduct();
    NodePtr parsePower();
    NodePtr parseAs();
    NodePtr parseUnary();
    bool startsNegativeArgument() const;
    bool startsReference() const;
    bool canStartArgument() const;
    NodePtr parseCall();
    NodePtr parseArgument();
    NodePtr parseReference();
    NodePtr parsePostfix(bool caseLabel = false);
    NodePtr literal(const Token& t, Value v);
    NodePtr parseFactor();
    NodePtr parseBlock();
    NodePtr parseArray();
    NodePtr parseBitArray();
    NodePtr parsePoint();

    // ---- Control forms (parser.cpp).
    NodePtr parseIf();
    NodePtr parseWhile();
    NodePtr parseDoWhile();
    NodePtr parseFor();
    NodePtr parseCase();
    NodePtr parseCaseLabel();
    NodePtr parseTry();
    NodePtr parseFn();
    NodePtr parseDecl();
    NodePtr parseReturn();
    NodePtr parseExit();
    NodePtr parseMax();
    NodePtr parseSwitch();
    bool startsContext() const;
    bool parseClause(ast::Context::Clause& clause, bool with);
    NodePtr parseContext();
    NodePtr parseSetContext();
    NodePtr parseWhen();

    // ---- Definitions (parser_definitions.cpp).
    // Which definition starts at the cursor, if one does.
    std::optional<ast::DefKind> startsDefinition() const;
    NodePtr parseDefinition(ast::DefKind kind);
    // A keyword argument (`name: value`) at the current keyword token; keyword arguments while they follow.
    ast::KeywordArg parseKeywordArg();
    void parseKeywordArgs(std::vector<ast::KeywordArg>& into);
    void parseHeaderKeywords(ast::Definition& def);
    void parseStructBody(ast::Definition& def);
    // The clauses of a rollout, utility, rcmenu, tool, plug-in, attributes or parameter block up to its ")".
    void parseClauses(ast::Definition& def);
    void parseMacroBody(ast::Definition& def);
    void parseHandler(ast::Definition& def, bool targetFirst);
    void parseLocals(ast::Definition& def);
    void parseFunctionMember(ast::Definition& def, bool isPrivate);
    ast::ControlDef parseControl(bool menu);
    ast::ControlDef parseParameter();
    ast::ControlDef parseSubMenu();
    std::vector<ast::ControlDef> parseControlGroup(bool menu);

    std::vector<Token> toks_;
    std::unique_ptr<ScriptError> lexError_;
    // Nesting depth of expressions: a text nested deeper than the stack can take fails as a syntax error.
    struct Nest {
        explicit Nest(Parser& p) : parser(p) {
            if (++parser.depth_ > kMaxDepth) parser.fail(L"<expression nested less deeply>");
        }
        ~Nest() { --parser.depth_; }
        Parser& parser;
    };
    static constexpr int kMaxDepth = 1000;
    int depth_ = 0;

    std::size_t pos_ = 0;
    bool failedAtEnd_ = false;
    bool started_ = false;  // NextTopLevel has handed out an expression
};

}  // namespace hostrt::mxs
