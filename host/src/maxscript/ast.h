// The syntax tree the parser builds and the evaluator walks. Every node knows where it is written.
#pragma once

#include "maxscript/value.h"

#include <memory>
#include <string>
#include <vector>

namespace hostrt::mxs::ast {

enum class NodeKind {
    Literal,      // numbers, strings, names, true/false/undefined/ok
    Var,          // a variable or global
    Path,         // $name
    ArrayLit,     // #(...)
    BitArrayLit,  // #{...}
    PointLit,     // [x, y] and [x, y, z]
    Block,        // ( e; e; ... )
    Unary,        // -x, not x
    Binary,       // arithmetic, comparison, and/or, as
    Assign,       // x = e, x += e, a.b = e, a[i] = e
    Property,     // a.b
    Index,        // a[i]
    Call,         // f a b key:v, f()
    If,
    While,
    DoWhile,
    For,
    Case,
    Try,
    FnDef,
    Decl,     // local / global declarations
    Return,
    Exit,
    Continue,
    Context,  // undo on, animate on, at time t, in coordsys c, about p, with ...
    MaxCmd,   // max undo
    LastResult,   // ? (the value of the last top-level expression)
    RefArg,       // &x: a variable, property or item handed by reference
    SetContext,   // set animate on, set coordsys local: a context for what follows
    When,         // when transform $a changes do ..., when $a deleted do ...
    Definition,   // struct, rollout, utility, rcmenu, tool, plugin, attributes, macroScript
};

struct Node {
    explicit Node(NodeKind k) : kind(k) {}
    virtual ~Node() = default;
    NodeKind kind;
    int line = 0;
    int column = 0;
};
using NodePtr = std::unique_ptr<Node>;

struct Literal : Node {
    Literal() : Node(NodeKind::Literal) {}
    Value value;  // strings are copied at each evaluation, so a script cannot change its own literal
};

struct Var : Node {
    Var() : Node(NodeKind::Var) {}
    std::wstring name;  // as written
    std::wstring key;   // folded for lookup
    bool global = false;  // ::name: the global, past any local of that name
};

struct Path : Node {
    Path() : Node(NodeKind::Path) {}
    std::wstring path;
};

struct ArrayLit : Node {
    ArrayLit() : Node(NodeKind::ArrayLit) {}
    std::vector<NodePtr> items;
};

struct BitArrayLit : Node {
    BitArrayLit() : Node(NodeKind::BitArrayLit) {}
    struct Item {
        NodePtr from;
        NodePtr to;  // null for a single bit
    };
    std::vector<Item> items;
};

struct PointLit : Node {
    PointLit() : Node(NodeKind::PointLit) {}
    std::vector<NodePtr> components;  // 2 or 3
};

struct Block : Node {
    Block() : Node(NodeKind::Block) {}
    std::vector<NodePtr> body;
    bool scoped = true;  // false for the top level of a script
};

struct Unary : Node {
    Unary() : Node(NodeKind::Unary) {}
    std::wstring op;  // "-", "not" or "*" (dereference)
    NodePtr operand;
};

struct Binary : Node {
    Binary() : Node(NodeKind::Binary) {}
    std::wstring op;  // + - * / ^ == != < <= > >= and or as
    NodePtr left;
    NodePtr right;
};

struct Assign : Node {
    Assign() : Node(NodeKind::Assign) {}
    std::wstring op;  // = += -= *= /=
    NodePtr target;   // Var, Property or Index
    NodePtr value;
};

struct Property : Node {
    Property() : Node(NodeKind::Property) {}
    NodePtr object;
    std::wstring name;
};

struct Index : Node {
    Index() : Node(NodeKind::Index) {}
    NodePtr object;
    NodePtr index;
};

struct KeywordArg {
    std::wstring name;
    NodePtr value;
};

struct Call : Node {
    Call() : Node(NodeKind::Call) {}
    NodePtr callee;
    std::vector<NodePtr> args;
    std::vector<KeywordArg> keywords;
    // `x -1` was read as a call with the argument -1; when x is no function it means x - 1.
    bool ambiguousMinus = false;
};

struct If : Node {
    If() : Node(NodeKind::If) {}
    NodePtr test;
    NodePtr then;
    NodePtr otherwise;  // may be null
};

struct While : Node {
    While() : Node(NodeKind::While) {}
    NodePtr test;
    NodePtr body;
};

struct DoWhile : Node {
    DoWhile() : Node(NodeKind::DoWhile) {}
    NodePtr body;
    NodePtr test;
};

struct For : Node {
    For() : Node(NodeKind::For) {}
    std::wstring var;  // folded
    NodePtr from;      // `for v = from to to by step`
    NodePtr to;
    NodePtr step;      // may be null
    NodePtr in;        // `for v in in`
    NodePtr where;     // may be null
    NodePtr whileTest; // may be null
    bool collect = false;
    NodePtr body;
};

struct Case : Node {
    Case() : Node(NodeKind::Case) {}
    NodePtr subject;  // may be null: labels are then tests
    struct Item {
        NodePtr label;  // null for default
        NodePtr body;
    };
    std::vector<Item> items;
};

struct Try : Node {
    Try() : Node(NodeKind::Try) {}
    NodePtr body;
    NodePtr handler;
};

struct FnDef : Node {
    FnDef() : Node(NodeKind::FnDef) {}
    std::wstring name;  // as written
    std::vector<std::wstring> params;  // folded
    std::vector<bool> byReference;     // per parameter: written &name, the caller's variable gets the final value
    bool mapped = false;               // applied to each item when the first argument is a collection
    bool handler = false;              // an event handler: missing arguments are undefined, extra ones dropped
    struct KeywordParam {
        std::wstring name;  // folded
        std::wstring written;
        NodePtr defaultValue;  // may be null: unsupplied
    };
    std::vector<KeywordParam> keywords;
    NodePtr body;
};

struct Decl : Node {
    Decl() : Node(NodeKind::Decl) {}
    bool global = false;
    struct Item {
        std::wstring name;  // folded
        NodePtr init;       // may be null
    };
    std::vector<Item> items;
};

struct Return : Node {
    Return() : Node(NodeKind::Return) {}
    NodePtr value;  // may be null
};

struct Exit : Node {
    Exit() : Node(NodeKind::Exit) {}
    NodePtr value;  // `exit with value`; may be null
};

struct Continue : Node {
    Continue() : Node(NodeKind::Continue) {}
};

struct Context : Node {
    Context() : Node(NodeKind::Context) {}
    struct Clause {
        std::wstring what;  // "undo", "animate", "time", "coordsys", "about", "level", "redraw", "quiet", or
                            // another `with` switch (folded)
        NodePtr label;      // undo label, may be null
        NodePtr value;      // on/off as a literal boolean, the time, or the coordinate system / centre: a
                            // name literal (#world, #local, #parent, #pivot ...) or a node or point expression
    };
    std::vector<Clause> clauses;
    NodePtr body;
};

// `set animate on`, `set coordsys local`, `set time 10`: the clause stays in force for later expressions.
struct SetContext : Node {
    SetContext() : Node(NodeKind::SetContext) {}
    Context::Clause clause;
};

struct LastResult : Node {
    LastResult() : Node(NodeKind::LastResult) {}
};

struct RefArg : Node {
    RefArg() : Node(NodeKind::RefArg) {}
    NodePtr target;  // Var, Property or Index
};

// `when <attribute> <objects> changes [id:n] [handleAt:n] [param] do body` and
// `when <objects> deleted [id:n] [handleAt:n] [param] do body`.
struct When : Node {
    When() : Node(NodeKind::When) {}
    std::wstring attribute;  // folded: transform, geometry, topology, names, parameters, select, ... or "deleted"
    NodePtr objects;
    std::vector<KeywordArg> keywords;  // id:, handleAt:
    std::wstring param;                // folded; empty when none
    NodePtr body;
};

// One written control or parameter of a definition: `spinner spn "Count" range:[0,10,1]`, a menu item,
// `group "Title" (...)` and `subMenu "Title" (...)` with their children, or a parameter of a parameter block
// (`size type:#float default:1 ui:spn`, its type empty).
struct ControlDef {
    std::wstring type;  // folded
    std::wstring name;  // as written
    NodePtr caption;    // may be null
    std::vector<KeywordArg> keywords;
    std::vector<ControlDef> children;  // group and subMenu
    int line = 0;
    int column = 0;
};

// A member of a definition in written order: a variable (struct member or `local`) with its initial
// value, or a function (init is then the FnDef).
struct Member {
    std::wstring name;     // folded
    std::wstring written;  // as written
    NodePtr init;          // may be null
    bool function = false;
    bool isPrivate = false;
};

enum class DefKind { Struct, Rollout, Utility, RCMenu, Tool, Plugin, Attributes, MacroScript, Parameters };

struct Definition : Node {
    Definition() : Node(NodeKind::Definition) {}
    DefKind what = DefKind::Struct;
    std::wstring name;        // as written
    std::wstring superclass;  // plugin: helper, geometry, modifier ... (folded)
    NodePtr caption;          // rollout and utility titles, a macroScript's button text; may be null
    std::vector<KeywordArg> keywords;  // header keywords: category:, width:, classID:, rollout: ...
    std::vector<Member> members;
    // Event handlers as functions: name "<target>.<event>" (target empty for `on <event>`), handler set.
    struct Handler {
        std::wstring target;  // folded; empty for events of the definition itself
        std::wstring event;   // folded
        std::unique_ptr<FnDef> fn;
    };
    std::vector<Handler> handlers;
    std::vector<ControlDef> controls;
    std::vector<std::unique_ptr<Definition>> nested;  // rollouts, parameter blocks, tools of plug-ins
    std::vector<NodePtr> body;  // a macroScript's expressions outside its handlers
};

struct MaxCmd : Node {
    MaxCmd() : Node(NodeKind::MaxCmd) {}
    std::wstring command;  // folded words joined by one blank
};

// A parsed script: its top-level block and the text it came from (for error reports).
struct Program {
    std::unique_ptr<Block> top;
    std::wstring source;
    std::wstring sourceName;
};

}  // namespace hostrt::mxs::ast
