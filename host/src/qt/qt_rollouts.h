// hostrt::QtRolloutPresenter: the command panel of a graphical session. It shows the automatic rollouts of the
// selected object's parameter blocks: each rollout's dialog template (from the plug-in's resources) built as Qt
// widgets at its dialog-unit places, its controls bound to the block's parameters (check boxes, edits, radio
// buttons, spinners, combo boxes; every change one undo step; a change made elsewhere, by a script or an undo,
// shows in the controls), and the other buttons passed to the plug-in's own rollout procedure.
#pragma once

#include "core/paramblock_rollouts.h"
#include "maxtypes.h"

#include <memory>
#include <vector>

class Animatable;
class QScrollArea;
class QWidget;

namespace hostrt {

class QtRollout;

class QtRolloutPresenter : public ParamRolloutPresenter {
public:
    explicit QtRolloutPresenter(QScrollArea* panel);
    ~QtRolloutPresenter() override;

    // Begins editing the one selected node's object (ending the previous one), or ends editing when not exactly
    // one node is selected.
    void ShowSelection();

    void Open(IObjParam* ip, IParamBlock2* block) override;
    void Close(IObjParam* ip, IParamBlock2* block) override;

private:
    void Relayout();
    QScrollArea* panel_;
    QWidget* column_;
    ParamRolloutPresenter* previous_ = nullptr;
    AnimHandle editing_ = 0;  // the object being edited, by handle: it may be deleted meanwhile
    std::vector<std::unique_ptr<QtRollout>> rollouts_;
    std::vector<std::unique_ptr<QtRollout>> closed_;  // closed while one of their buttons may still be running
};

}  // namespace hostrt
