// Array built-ins: append, appendIfUnique, deleteItem, insertItem, findItem, join, sort, qsort,
// makeUniqueArray.
#include "maxscript/builtins.h"

#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/interpreter.h"
#include "maxscript/operators.h"
#include "maxscript/print.h"

#include <algorithm>

namespace hostrt::mxs {

namespace {

ArrayData& ArrayArg(const CallArgs& args, std::size_t i) {
    const Value& v = args.positional[i];
    if (!v.Is(Kind::Array)) throw ConversionError(v, L"Array");
    return v.Items();
}

std::size_t ItemIndex(const ArrayData& items, const Value& index, bool allowEnd) {
    const int i = ToInt(index);
    const int last = int(items.size()) + (allowEnd ? 1 : 0);
    if (i < 1 || i > last) throw RuntimeError(L"Array index out of bounds: " + PrintForm(index));
    return std::size_t(i - 1);
}

// A stable merge sort that stays within the array whatever a script's comparison answers (the standard
// sorts need a consistent order).
template <class Less> void MergeSort(ArrayData& items, const Less& less) {
    if (items.size() < 2) return;
    ArrayData left(items.begin(), items.begin() + std::ptrdiff_t(items.size() / 2));
    ArrayData right(items.begin() + std::ptrdiff_t(items.size() / 2), items.end());
    MergeSort(left, less);
    MergeSort(right, less);
    std::size_t i = 0, j = 0, k = 0;
    while (i < left.size() && j < right.size()) items[k++] = less(right[j], left[i]) ? right[j++] : left[i++];
    while (i < left.size()) items[k++] = left[i++];
    while (j < right.size()) items[k++] = right[j++];
}

}  // namespace

void RegisterArrayBuiltins() {
    RegisterGlobalFunction(L"append", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"append", args, 2);
        const Value& target = args.positional[0];
        if (target.Is(Kind::String)) {
            target.MutableText() += ToText(args.positional[1]);
            return target;
        }
        ArrayArg(args, 0).push_back(args.positional[1]);
        return target;
    });
    RegisterGlobalFunction(L"deleteItem", [](CallContext& ctx, CallArgs& args) {
        CheckArgCount(L"deleteItem", args, 2);
        const Value& target = args.positional[0];
        if (target.Is(Kind::Ext)) {
            if (!target.ExtObj()->DeleteItem(ctx, args.positional[1]))
                throw RuntimeError(L"deleteItem: no item " + PrintForm(args.positional[1]) + L" in " +
                                   PrintForm(target));
            return target;
        }
        if (target.Is(Kind::BitArray)) {
            const int i = ToInt(args.positional[1]);
            if (i >= 1) target.BitsRef().Clear(i - 1);
            return target;
        }
        ArrayData& items = ArrayArg(args, 0);
        items.erase(items.begin() + std::ptrdiff_t(ItemIndex(items, args.positional[1], false)));
        return target;
    });
    RegisterGlobalFunction(L"insertItem", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"insertItem", args, 3);
        ArrayData& items = ArrayArg(args, 1);
        const std::size_t at = std::min(std::size_t(std::max(ToInt(args.positional[2]), 1) - 1), items.size());
        items.insert(items.begin() + std::ptrdiff_t(at), args.positional[0]);
        return args.positional[1];
    });
    RegisterGlobalFunction(L"findItem", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"findItem", args, 2);
        const ArrayData& items = ArrayArg(args, 0);
        for (std::size_t i = 0; i < items.size(); ++i)
            if (ValuesEqual(items[i], args.positional[1])) return Value::Int(int(i) + 1);
        return Value::Int(0);
    });
    RegisterGlobalFunction(L"join", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"join", args, 2);
        const Value& target = args.positional[0];
        if (target.Is(Kind::BitArray)) {
            if (!args.positional[1].Is(Kind::BitArray)) throw ConversionError(args.positional[1], L"BitArray");
            target.BitsRef() = Arithmetic(L"+", target, args.positional[1]).BitsRef();
            return target;
        }
        ArrayData& items = ArrayArg(args, 0);
        const ArrayData extra = ArrayArg(args, 1);  // a copy: joining an array to itself doubles it
        items.insert(items.end(), extra.begin(), extra.end());
        return target;
    });
    RegisterGlobalFunction(L"sort", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"sort", args, 1);
        ArrayData& items = ArrayArg(args, 0);
        // Sorted as a copy: values that do not order throw, and the array stays as it was.
        ArrayData sorted = items;
        std::stable_sort(sorted.begin(), sorted.end(), [](const Value& a, const Value& b) { return Order(a, b) < 0; });
        items = std::move(sorted);
        return args.positional[0];
    });
    RegisterGlobalFunction(L"appendIfUnique", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"appendIfUnique", args, 2);
        ArrayData& items = ArrayArg(args, 0);
        for (const Value& v : items)
            if (ValuesEqual(v, args.positional[1])) return Value::Bool(false);
        items.push_back(args.positional[1]);
        return Value::Bool(true);
    });
    // qsort <array> <function> [start:] [end:] [other keywords handed to the function]: the function answers a
    // negative number, 0 or a positive number for each pair it compares.
    RegisterGlobalFunction(L"qsort", [](CallContext& ctx, CallArgs& args) {
        CheckArgCount(L"qsort", args, 2);
        ArrayData& items = ArrayArg(args, 0);
        const Value compare = args.positional[1];
        int first = 1, last = int(items.size());
        CallArgs extra;
        for (const auto& [name, value] : args.keywords) {
            if (EqualsNoCase(name, L"start")) first = ToInt(value);
            else if (EqualsNoCase(name, L"end")) last = ToInt(value);
            else extra.keywords.emplace_back(name, value);
        }
        first = std::max(first, 1);
        last = std::min(last, int(items.size()));
        if (first >= last) return Value::Ok();
        // Sorted as a copy: an error in the function leaves the array as it was.
        ArrayData part(items.begin() + (first - 1), items.begin() + last);
        MergeSort(part, [&](const Value& a, const Value& b) {
            CallArgs call = extra;
            call.positional = {a, b};
            return ToFloat(ctx.interp.Call(compare, call)) < 0;
        });
        std::copy(part.begin(), part.end(), items.begin() + (first - 1));
        return Value::Ok();
    });
    RegisterGlobalFunction(L"makeUniqueArray", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"makeUniqueArray", args, 1);
        ArrayData unique;
        for (const Value& v : ArrayArg(args, 0)) {
            bool seen = false;
            for (const Value& u : unique) seen = seen || ValuesEqual(u, v);
            if (!seen) unique.push_back(v);
        }
        return Value::Array(std::move(unique));
    });
}

}  // namespace hostrt::mxs
