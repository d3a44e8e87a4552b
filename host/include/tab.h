// Tab, the host's growable array of plain values or pointers, and MaxSDK::Array, the array of
// function-publishing parameter lists. Both throw a host exception for an index outside the array.
#pragma once

#include "maxexception.h"

#include <algorithm>
#include <vector>

template <class T> class Tab {
public:
    Tab() = default;
    Tab(std::initializer_list<T> items) : v_(items) {}

    int Count() const { return int(v_.size()); }
    int length() const { return Count(); }
    bool empty() const { return v_.empty(); }
    void ZeroCount() { v_.clear(); }
    // Sets the number of items; new items are value-initialised (null for pointers).
    void SetCount(int n, BOOL /*resize*/ = TRUE) { v_.resize(n < 0 ? 0 : std::size_t(n)); }
    // Reserves room without changing the count.
    int Resize(int n) { v_.reserve(n < 0 ? 0 : std::size_t(n)); return 1; }
    void Shrink() { v_.shrink_to_fit(); }

    // Appends num items from el and answers the index of the first.
    int Append(int num, const T* el, int /*allocExtra*/ = 0) {
        const int at = Count();
        v_.insert(v_.end(), el, el + num);
        return at;
    }
    int Append(const T& el) { v_.push_back(el); return Count() - 1; }
    // Inserts num items in front of index at.
    int Insert(int at, int num, const T* el) {
        if (at < 0 || at > Count()) throw MaxSDK::Util::OutOfRangeException(kMessage);
        v_.insert(v_.begin() + at, el, el + num);
        return at;
    }
    // Deletes num items from start and answers the new count.
    int Delete(int start, int num) {
        if (start < 0 || num < 0 || start + num > Count()) throw MaxSDK::Util::OutOfRangeException(kMessage);
        v_.erase(v_.begin() + start, v_.begin() + start + num);
        return Count();
    }
    // Index of the first item equal to el, -1 when absent.
    int IndexOf(const T& el) const {
        auto it = std::find(v_.begin(), v_.end(), el);
        return it == v_.end() ? -1 : int(it - v_.begin());
    }
    bool Contains(const T& el) const { return IndexOf(el) >= 0; }
    bool Remove(const T& el) {
        int i = IndexOf(el);
        if (i < 0) return false;
        Delete(i, 1);
        return true;
    }

    T& operator[](int i) { check(i); return v_[std::size_t(i)]; }
    const T& operator[](int i) const { check(i); return v_[std::size_t(i)]; }
    T* Addr(int i) { check(i); return &v_[std::size_t(i)]; }

    auto begin() { return v_.begin(); }
    auto end() { return v_.end(); }
    auto begin() const { return v_.begin(); }
    auto end() const { return v_.end(); }
    std::vector<T>& vec() { return v_; }
    const std::vector<T>& vec() const { return v_; }

    static constexpr const MCHAR* kMessage = L"Invalid index passed into a Max SDK Tab::operator[]";

private:
    void check(int i) const {
        if (i < 0 || i >= Count()) throw MaxSDK::Util::OutOfRangeException(kMessage);
    }
    std::vector<T> v_;
};

namespace MaxSDK {
template <class T> class Array {
public:
    Array() = default;
    Array(std::initializer_list<T> items) : v_(items) {}
    std::size_t length() const { return v_.size(); }
    bool isEmpty() const { return v_.empty(); }
    Array& append(const T& el) { v_.push_back(el); return *this; }
    void removeAll() { v_.clear(); }
    void setLengthUsed(std::size_t n) { v_.resize(n); }

    T& operator[](std::size_t i) { check(i); return v_[i]; }
    const T& operator[](std::size_t i) const { check(i); return v_[i]; }

    auto begin() { return v_.begin(); }
    auto end() { return v_.end(); }
    auto begin() const { return v_.begin(); }
    auto end() const { return v_.end(); }

    static constexpr const MCHAR* kMessage = L"Argument index out of bounds, passed into a MaxSDK::Array::operator[]";

private:
    void check(std::size_t i) const {
        if (i >= v_.size()) throw MaxSDK::Util::OutOfRangeException(kMessage);
    }
    std::vector<T> v_;
};
}  // namespace MaxSDK

class INode;
using INodeTab = Tab<INode*>;
