// Class descriptors of the host's controllers, and the host's default controllers.
#include "scene/controllers/controller_classes.h"

#include "core/class_directory.h"
#include "istdplug.h"
#include "scene/controllers/euler_control.h"
#include "scene/controllers/keyed_control.h"
#include "scene/controllers/list_control.h"
#include "scene/controllers/lookat_control.h"
#include "scene/controllers/prs_control.h"
#include "scene/objects/host_class_desc.h"

namespace hostrt {

void RegisterControllerClasses() {
    static bool done = false;
    if (done) return;
    done = true;
    static HostClassDesc<FloatKeyControl> floatDesc(L"Bezier Float", CTRL_FLOAT_CLASS_ID, HOST_FLOAT_CONTROL_CLASS_ID);
    static HostClassDesc<Point3KeyControl> point3Desc(L"Bezier Point3", CTRL_POINT3_CLASS_ID,
                                                      HOST_POINT3_CONTROL_CLASS_ID);
    static HostClassDesc<PositionKeyControl> posDesc(L"Bezier Position", CTRL_POSITION_CLASS_ID,
                                                     HOST_POSITION_CONTROL_CLASS_ID);
    static HostClassDesc<ScaleKeyControl> scaleDesc(L"Bezier Scale", CTRL_SCALE_CLASS_ID, HOST_SCALE_CONTROL_CLASS_ID);
    static HostClassDesc<EulerXYZControl> eulerDesc(L"Euler XYZ", CTRL_ROTATION_CLASS_ID,
                                                    Class_ID(EULER_CONTROL_CLASS_ID, 0));
    static HostClassDesc<PRSControl> prsDesc(L"Position/Rotation/Scale", CTRL_MATRIX3_CLASS_ID,
                                             Class_ID(PRS_CONTROL_CLASS_ID, 0));
    static HostClassDesc<LookAtControl> lookAtDesc(L"LookAt", CTRL_MATRIX3_CLASS_ID,
                                                   Class_ID(LOOKAT_CONTROL_CLASS_ID, 0));
    auto& dir = ClassDirectory::Instance();
    for (ClassDesc* d : std::initializer_list<ClassDesc*>{&floatDesc, &point3Desc, &posDesc, &scaleDesc, &eulerDesc,
                                                          &prsDesc, &lookAtDesc, FloatListControl::Desc()})
        dir.Register(d);
}

}  // namespace hostrt

Control* NewDefaultFloatController() { return new hostrt::FloatKeyControl(); }
Control* NewDefaultPoint3Controller() { return new hostrt::Point3KeyControl(); }
Control* NewDefaultPositionController() { return new hostrt::PositionKeyControl(); }
Control* NewDefaultRotationController() { return new hostrt::EulerXYZControl(); }
Control* NewDefaultScaleController() { return new hostrt::ScaleKeyControl(); }
Control* NewDefaultMatrix3Controller() { return new hostrt::PRSControl(); }

Control* CreateLookatControl(INode* target) {
    auto* c = new hostrt::LookAtControl();
    if (target) {
        theHold.Suspend();
        c->SetTarget(target);
        theHold.Resume();
    }
    return c;
}
