// The reference batch: a bracket around bulk scene changes by the reference operations. Opening it prepares the
// host once (PreProcess), closing it restores the host once (PostProcess); an operation called inside an open
// batch shares it.
#pragma once

namespace vandrels {

// Custom notifications: the end of PreProcess and the start of PostProcess (no call parameter).
constexpr int kNotifyBatchOpened = 0xDFA6;
constexpr int kNotifyBatchClosing = 0xDFA7;

void PreProcess();
void PostProcess();
// Number of batches opened so far.
int GetBatchCounter();

// Opens a batch for its lifetime when none is open, and closes it on every way out; Close ends it early.
class BatchScope {
public:
    BatchScope();
    ~BatchScope();
    BatchScope(const BatchScope&) = delete;
    BatchScope& operator=(const BatchScope&) = delete;
    bool Opened() const { return opened_; }
    // Closes the batch now when this scope opened it and it is still open.
    void Close();

private:
    bool opened_ = false;
};

}  // namespace vandrels
