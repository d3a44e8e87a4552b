// The undo system: nested holds collect restore objects; the outermost accept makes a named undo step.
#include "hold.h"

Hold theHold;

Hold::Hold() = default;

Hold::~Hold() {
    // At process exit the objects these records refer to may be gone already: let the records go unrun.
    for (auto& level : levels_)
        for (auto& r : level) (void)r.release();
    for (auto* stack : {&undo_, &redo_})
        for (auto& step : *stack)
            for (auto& r : step.objects) (void)r.release();
}

void Hold::Begin() { levels_.emplace_back(); }

BOOL Hold::Holding() const { return !levels_.empty() && suspend_ == 0; }

void Hold::Put(RestoreObj* rob) {
    if (!rob) return;
    if (levels_.empty() || suspend_ > 0) {
        delete rob;
        return;
    }
    levels_.back().emplace_back(rob);
}

void Hold::Accept(const MCHAR* name) {
    if (levels_.empty()) return;
    auto objects = std::move(levels_.back());
    levels_.pop_back();
    if (!levels_.empty()) {
        for (auto& r : objects) levels_.back().push_back(std::move(r));
        return;
    }
    if (objects.empty()) return;
    for (auto& r : objects) r->EndHold();
    redo_.clear();
    undo_.push_back(Step{MSTR(name ? name : L""), std::move(objects)});
    trim();
}

void Hold::Cancel() {
    if (levels_.empty()) return;
    auto objects = std::move(levels_.back());
    levels_.pop_back();
    bool was = restoring_;
    restoring_ = true;
    for (auto it = objects.rbegin(); it != objects.rend(); ++it) (*it)->Restore(FALSE);
    restoring_ = was;
    for (auto& r : objects) r->EndHold();
}

bool Hold::Undo() {
    if (!levels_.empty() || undo_.empty()) return false;
    Step step = std::move(undo_.back());
    undo_.pop_back();
    restoring_ = true;
    for (auto it = step.objects.rbegin(); it != step.objects.rend(); ++it) (*it)->Restore(TRUE);
    restoring_ = false;
    redo_.push_back(std::move(step));
    return true;
}

bool Hold::Redo() {
    if (!levels_.empty() || redo_.empty()) return false;
    Step step = std::move(redo_.back());
    redo_.pop_back();
    redoing_ = true;
    for (auto& r : step.objects) r->Redo();
    redoing_ = false;
    undo_.push_back(std::move(step));
    return true;
}

void Hold::FlushUndoBuffer() {
    // Destroying records may delete objects whose own clean-up puts records: empty the stacks first.
    auto undo = std::move(undo_);
    auto redo = std::move(redo_);
    undo_.clear();
    redo_.clear();
    undo.clear();
    redo.clear();
}

MSTR Hold::UndoEntryName(int i) const {
    if (i < 0 || i >= int(undo_.size())) return MSTR();
    return undo_[undo_.size() - 1 - std::size_t(i)].name;
}

MSTR Hold::RedoEntryName(int i) const {
    if (i < 0 || i >= int(redo_.size())) return MSTR();
    return redo_[redo_.size() - 1 - std::size_t(i)].name;
}

void Hold::trim() {
    while (int(undo_.size()) > levels_max_) undo_.erase(undo_.begin());
}
