// A reference-slot layout: consecutive groups of slots, each group of one kind and of a given size, numbered from
// 0 in group order. It answers both ways: where slot k of a kind is, and what kind (and place in its group) slot
// i is. The helper and the node record build theirs from their lists' sizes (helper_slots.h,
// node_record_slots.h).
#pragma once

#include <array>
#include <cstddef>

namespace vandrels {

template <class Kind, std::size_t N>
class SlotLayout {
public:
    // What one slot is: the kind of its group and its place in the group. `inRange` is false past the last slot
    // (and for negative numbers).
    struct Slot {
        bool inRange = false;
        Kind kind{};
        int index = 0;
    };
    struct Group {
        Kind kind;
        int size;
    };

    constexpr explicit SlotLayout(const std::array<Group, N>& groups) : groups_(groups) {}

    // The number of slots.
    constexpr int Count() const {
        int count = 0;
        for (const Group& group : groups_) count += group.size;
        return count;
    }
    // The slot number of the index-th slot of kind's group (not checked against the group's size).
    constexpr int SlotOf(Kind kind, int index = 0) const {
        int first = 0;
        for (const Group& group : groups_) {
            if (group.kind == kind) return first + index;
            first += group.size;
        }
        return -1;
    }
    // What slot i is.
    constexpr Slot At(int i) const {
        if (i < 0) return {};
        for (const Group& group : groups_) {
            if (i < group.size) return {true, group.kind, i};
            i -= group.size;
        }
        return {};
    }

private:
    std::array<Group, N> groups_;
};

}  // namespace vandrels
