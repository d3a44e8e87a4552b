// The command panel's side of automatic parameter-block rollouts: which blocks have their rollout open, and the
// user-interface presenter that shows and hides them.
#pragma once

#include "iparamb2.h"

#include <vector>

namespace hostrt {

// Installed by the user interface; without one the host only keeps the list of open rollouts.
class ParamRolloutPresenter {
public:
    virtual ~ParamRolloutPresenter() = default;
    virtual void Open(IObjParam* ip, IParamBlock2* block) = 0;
    virtual void Close(IObjParam* ip, IParamBlock2* block) = 0;
};

// Installs (or, with null, removes) the presenter; answers the previous one.
ParamRolloutPresenter* SetParamRolloutPresenter(ParamRolloutPresenter* presenter);
// Blocks whose automatic rollout is open, in opening order.
std::vector<IParamBlock2*> OpenParamRollouts();
// Closes the rollout of a block that is being destroyed.
void ForgetParamRollout(IParamBlock2* block);

// The block of obj made from desc: among obj's parameter blocks or references; null when none.
IParamBlock2* FindParamBlockOf(ReferenceMaker* obj, ParamBlockDesc2* desc);

}  // namespace hostrt
