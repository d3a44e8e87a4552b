// The host's controllers: keys and interpolation with animate mode and undo, the position-rotation-scale and
// Euler controllers evaluated against a parent, the float list controller's operations and messages, and
// save/load/clone of controllers.
#include "core/class_directory.h"
#include "core/paramblock_classes.h"
#include "ilistctrl.h"
#include "io/scene_reader.h"
#include "io/scene_writer.h"
#include "istdplug.h"
#include "scene/controllers/controller_classes.h"
#include "scene/controllers/keyed_control.h"
#include "test_objects.h"

#include <gtest/gtest.h>

#include <cmath>

using testobj::Item;

namespace {

constexpr float kPi = 3.14159265f;

struct SceneControllers : ::testing::Test {
    void SetUp() override {
        hostrt::RegisterParamBlockClasses();
        hostrt::RegisterControllerClasses();
        theHold.FlushUndoBuffer();
        AnimateOff();
    }
    void TearDown() override {
        AnimateOff();
        while (theHold.GetBeginDepth() > 0) theHold.Cancel();
        theHold.FlushUndoBuffer();
    }
    static std::vector<RefMessage> messages(const Item& watcher) {
        std::vector<RefMessage> m;
        for (const auto& h : watcher.heard) m.push_back(h.message);
        return m;
    }
    // Saves target and what it references, reads it back and answers the loaded copy.
    static ReferenceTarget* roundTrip(ReferenceTarget* target) {
        auto bytes = hostrt::WriteSceneFile({target}, L"controllers");
        auto image = hostrt::ParseSceneFile(std::move(bytes), L"controllers");
        return hostrt::InstantiateScene(image, L"controllers").roots.at(0);
    }
    static float floatAt(Control* c, TimeValue t) {
        float v = 0;
        Interval iv = FOREVER;
        c->GetValue(t, &v, iv);
        return v;
    }
};

TEST_F(SceneControllers, KeysInterpolateAndAnimateModeDecidesWhatASetMakes) {
    Control* c = NewDefaultFloatController();
    EXPECT_EQ(c->SuperClassID(), CTRL_FLOAT_CLASS_ID);
    EXPECT_EQ(c->GetInterface(I_CONTROL), c);
    EXPECT_TRUE(c->IsKeyable());

    // Without keys a set value is the constant, at every time.
    float v = 4.f;
    c->SetValue(800, &v);
    EXPECT_EQ(c->NumKeys(), 0);
    EXPECT_FALSE(c->IsAnimated());
    EXPECT_EQ(floatAt(c, -1000), 4.f);

    // Animating at frame 10 keys frame 10 and keeps the old value at 0.
    AnimateOn();
    v = 14.f;
    c->SetValue(1600, &v);
    ASSERT_EQ(c->NumKeys(), 2);
    EXPECT_EQ(c->GetKeyTime(0), 0);
    EXPECT_EQ(c->GetKeyTime(1), 1600);
    EXPECT_FLOAT_EQ(floatAt(c, 400), 6.5f);
    EXPECT_FLOAT_EQ(floatAt(c, -50), 4.f);
    EXPECT_FLOAT_EQ(floatAt(c, 99999), 14.f);
    Interval valid = FOREVER;
    c->GetValue(400, &v, valid);
    EXPECT_EQ(valid, Interval(400, 400));
    valid = FOREVER;
    c->GetValue(2000, &v, valid);
    EXPECT_EQ(valid, Interval(1600, TIME_PosInfinity));
    SuspendAnimate();
    EXPECT_FALSE(Animating());
    ResumeAnimate();

    // Animate off: a key time changes that key; any other time moves every key by the difference.
    AnimateOff();
    v = 20.f;
    c->SetValue(1600, &v);
    EXPECT_FLOAT_EQ(floatAt(c, 0), 4.f);
    v = 5.f;
    c->SetValue(800, &v);  // was 12
    EXPECT_FLOAT_EQ(floatAt(c, 0), -3.f);
    EXPECT_FLOAT_EQ(floatAt(c, 1600), 13.f);

    // Deleting keys: the last one leaves its value as the constant.
    c->AddNewKey(800);
    EXPECT_EQ(c->NumKeys(), 3);
    EXPECT_FLOAT_EQ(floatAt(c, 800), 5.f);
    c->DeleteKeyAtTime(0);
    c->DeleteKeyByIndex(0);
    c->DeleteKeyByIndex(0);
    EXPECT_EQ(c->NumKeys(), 0);
    EXPECT_FLOAT_EQ(floatAt(c, 0), 13.f);
    c->DeleteThis();
}

TEST_F(SceneControllers, KeyEditsAreUndoableAndAnnounced) {
    Control* c = NewDefaultPoint3Controller();
    Item watcher("w", 1);
    watcher.ReplaceReference(0, c);

    AnimateOn();
    theHold.Begin();
    Point3 p(1, 2, 3);
    c->SetValue(320, &p);
    theHold.Accept(L"Key");
    EXPECT_EQ(c->NumKeys(), 2);
    EXPECT_EQ(messages(watcher), std::vector<RefMessage>{REFMSG_CHANGE});

    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(c->NumKeys(), 0);
    Point3 got;
    Interval iv = FOREVER;
    c->GetValue(320, &got, iv);
    EXPECT_EQ(got, Point3());
    EXPECT_EQ(watcher.heard.size(), 2u);
    ASSERT_TRUE(theHold.Redo());
    c->GetValue(160, &got, iv);
    EXPECT_EQ(got, Point3(0.5f, 1.f, 1.5f));
}

TEST_F(SceneControllers, PositionRotationScaleComposesWithTheParent) {
    Control* prs = NewDefaultMatrix3Controller();
    EXPECT_EQ(prs->ClassID(), Class_ID(PRS_CONTROL_CLASS_ID, 0));
    EXPECT_EQ(prs->SuperClassID(), CTRL_MATRIX3_CLASS_ID);
    EXPECT_FALSE(prs->IsLeaf());
    ASSERT_EQ(prs->NumSubs(), 3);
    EXPECT_EQ(prs->SubAnimName(0), MSTR(L"Position"));
    EXPECT_EQ(prs->SubAnimName(1), MSTR(L"Rotation"));
    EXPECT_EQ(prs->SubAnimName(2), MSTR(L"Scale"));
    EXPECT_EQ(prs->GetPositionController()->SuperClassID(), CTRL_POSITION_CLASS_ID);
    EXPECT_EQ(prs->GetRotationController()->ClassID(), Class_ID(EULER_CONTROL_CLASS_ID, 0));
    EXPECT_EQ(prs->GetScaleController()->SuperClassID(), CTRL_SCALE_CLASS_ID);

    Point3 pos(10, 0, 0);
    prs->GetPositionController()->SetValue(0, &pos);
    float quarter = kPi / 2;
    prs->GetRotationController()->GetZController()->SetValue(0, &quarter);
    ScaleValue twice(Point3(2, 2, 2));
    prs->GetScaleController()->SetValue(0, &twice);

    // Scale, then rotate, then move, then the parent: (1,0,0) -> (2,0,0) -> (0,2,0) -> (10,2,0) -> (10,2,5).
    Matrix3 tm = TransMatrix(Point3(0, 0, 5));
    Interval iv = FOREVER;
    prs->GetValue(0, &tm, iv, CTRL_RELATIVE);
    EXPECT_TRUE((Point3(1, 0, 0) * tm).Equals(Point3(10, 2, 5), 1e-4f));
    Matrix3 local;
    prs->GetValue(0, &local, iv, CTRL_ABSOLUTE);
    EXPECT_TRUE((Point3(1, 0, 0) * local).Equals(Point3(10, 2, 0), 1e-4f));

    // Setting a world transform under a parent makes the controller answer it again.
    Matrix3 world = RotateXYZMatrix(Point3(0.3f, -0.2f, 1.1f)) * TransMatrix(Point3(4, 5, 6));
    Matrix3 parent = RotateZMatrix(0.5f) * TransMatrix(Point3(1, 1, 1));
    SetXFormPacket set(world, parent);
    prs->SetValue(0, &set, 1, CTRL_RELATIVE);
    Matrix3 again = parent;
    prs->GetValue(0, &again, iv, CTRL_RELATIVE);
    EXPECT_TRUE(again.Equals(world, 1e-4f));
    // In absolute mode SetValue takes the local matrix.
    Matrix3 newLocal = ScaleMatrix(Point3(1, 3, 1)) * TransMatrix(Point3(-2, 0, 0));
    prs->SetValue(0, &newLocal, 1, CTRL_ABSOLUTE);
    prs->GetValue(0, &local, iv, CTRL_ABSOLUTE);
    EXPECT_TRUE(local.Equals(newLocal, 1e-4f));

    // Only a controller of the sub-anim's superclass is taken; a replacement announces the structure change.
    Item watcher("w", 1);
    watcher.ReplaceReference(0, prs);
    Control* f = NewDefaultFloatController();
    EXPECT_FALSE(prs->AssignController(f, 0));
    f->DeleteThis();
    Control* pos2 = NewDefaultPositionController();
    EXPECT_TRUE(prs->SetPositionController(pos2));
    EXPECT_EQ(prs->GetPositionController(), pos2);
    ASSERT_FALSE(watcher.heard.empty());
    EXPECT_EQ(watcher.heard.front().message, REFMSG_SUBANIM_STRUCTURE_CHANGED);
}

TEST_F(SceneControllers, EulerRotationTakesAndAnswersQuaternions) {
    Control* rot = NewDefaultRotationController();
    EXPECT_EQ(rot->NumSubs(), 3);
    EXPECT_EQ(rot->SubAnimName(2), MSTR(L"Z Rotation"));
    for (Point3 angles : {Point3(0.4f, -0.7f, 2.0f), Point3(-1.2f, 0.1f, -3.0f), Point3(0.2f, kPi / 2, 0.3f)}) {
        Quat q = MatrixToQuat(RotateXYZMatrix(angles));
        rot->SetValue(0, &q);
        Quat back;
        Interval iv = FOREVER;
        rot->GetValue(0, &back, iv);
        Matrix3 a, b;
        QuatToMatrix(q, a);
        QuatToMatrix(back, b);
        EXPECT_TRUE(a.Equals(b, 1e-4f)) << angles.x << " " << angles.y << " " << angles.z;
    }
    rot->DeleteThis();
}

TEST_F(SceneControllers, ListControllerOperationsAndMessages) {
    auto* list = dynamic_cast<Control*>(
        static_cast<Animatable*>(CreateInstance(CTRL_FLOAT_CLASS_ID, HOST_FLOAT_LIST_CONTROL_CLASS_ID)));
    ASSERT_NE(list, nullptr);
    IListControl* il = GetIListControlInterface(list);
    ASSERT_NE(il, nullptr);
    EXPECT_EQ(il->GetCount(), 0);
    EXPECT_EQ(il->GetActive(), -1);
    EXPECT_EQ(list->NumSubs(), 2);
    EXPECT_EQ(list->SubAnimName(0), MSTR(L"Available"));

    Item watcher("w", 1);
    watcher.ReplaceReference(0, list);
    Control* a = NewDefaultFloatController();
    Control* b = NewDefaultFloatController();
    Control* c = NewDefaultFloatController();
    float va = 1, vb = 10, vc = 100;
    a->SetValue(0, &va);
    b->SetValue(0, &vb);
    c->SetValue(0, &vc);
    for (Control* e : {a, b, c}) ASSERT_TRUE(list->AssignController(e, list->NumSubs() - 2));
    EXPECT_EQ(messages(watcher), std::vector<RefMessage>(3, REFMSG_SUBANIM_STRUCTURE_CHANGED));
    EXPECT_EQ(il->GetCount(), 3);
    EXPECT_EQ(il->GetActive(), 0);
    EXPECT_EQ(list->SubAnim(3), nullptr);
    EXPECT_EQ(list->SubAnimName(3), MSTR(L"Available"));
    EXPECT_EQ(list->SubAnim(4), list->GetParamBlock(0));
    EXPECT_EQ(floatAt(list, 0), 111.f);
    list->GetParamBlock(0)->SetValue(0, 0, 0.5f, 1);
    EXPECT_EQ(floatAt(list, 0), 106.f);
    EXPECT_EQ(il->GetSubCtrlWeight(1, 0), 0.5f);

    // Active change: 80 with part 0; setting the list's value moves the active entry.
    watcher.heard.clear();
    il->SetActive(1);
    ASSERT_EQ(watcher.heard.size(), 1u);
    EXPECT_EQ(watcher.heard[0].message, REFMSG_CHANGE);
    EXPECT_EQ(watcher.heard[0].part, PartID(0));
    float total = 116.f;
    list->SetValue(0, &total);
    EXPECT_EQ(floatAt(b, 0), 30.f);

    // Names, cut and paste in front of an entry, delete: each sends 258.
    watcher.heard.clear();
    EXPECT_EQ(il->GetName(0), MSTR(L"Bezier Float"));
    il->SetName(2, L"Hundred");
    il->CutItem(0);  // b c
    EXPECT_EQ(il->GetActive(), 0);
    EXPECT_EQ(il->GetSubCtrl(0), b);
    il->PasteItem(2);  // b c a
    EXPECT_EQ(il->GetSubCtrl(2), a);
    EXPECT_EQ(il->GetName(1), MSTR(L"Hundred"));
    EXPECT_EQ(il->GetSubCtrlWeight(0, 0), 0.5f);
    il->DeleteItem(1);  // b a
    EXPECT_EQ(il->GetCount(), 2);
    EXPECT_EQ(messages(watcher), std::vector<RefMessage>(4, REFMSG_SUBANIM_STRUCTURE_CHANGED));

    // Undo of a delete brings the entry and its name back.
    theHold.Begin();
    il->DeleteItem(0);
    theHold.Accept(L"Delete");
    EXPECT_EQ(il->GetCount(), 1);
    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(il->GetCount(), 2);
    EXPECT_EQ(il->GetSubCtrl(0), b);
    EXPECT_EQ(il->GetActive(), 0);

    // The published interface: C++ callers pass entry numbers from 0 (the script bridge shifts scripts' ones).
    theHold.FlushUndoBuffer();
    il->SetName(1, L"A");
    FPValue result;
    FPParams second{FPValue(TYPE_INDEX, 1)};
    EXPECT_EQ(il->Invoke(il->FindFn(L"getName"), result, &second), FPS_OK);
    EXPECT_EQ(MSTR(result.s), MSTR(L"A"));
    EXPECT_EQ(il->Invoke(il->FindFn(L"setActive"), &second), FPS_OK);
    EXPECT_EQ(il->GetActive(), 1);

    // Save, load and clone keep entries, names, weights and the active entry.
    for (ReferenceTarget* copy : {roundTrip(list), CloneRefHierarchy(list)}) {
        IListControl* cl = GetIListControlInterface(copy);
        ASSERT_NE(cl, nullptr);
        EXPECT_EQ(cl->GetCount(), 2);
        EXPECT_EQ(cl->GetActive(), 1);
        EXPECT_EQ(cl->GetName(1), MSTR(L"A"));
        EXPECT_NE(cl->GetSubCtrl(0), b);
        EXPECT_EQ(floatAt(static_cast<Control*>(copy), 0), floatAt(list, 0));
        copy->DeleteThis();
    }
}

TEST_F(SceneControllers, AnimatedTransformSurvivesSaveLoadAndClone) {
    Control* prs = NewDefaultMatrix3Controller();
    AnimateOn();
    Matrix3 at10 = RotateYMatrix(0.8f) * TransMatrix(Point3(3, 4, 5));
    prs->SetValue(1600, &at10);
    AnimateOff();
    for (ReferenceTarget* copy : {roundTrip(prs), CloneRefHierarchy(prs)}) {
        auto* c = static_cast<Control*>(copy);
        ASSERT_EQ(c->ClassID(), Class_ID(PRS_CONTROL_CLASS_ID, 0));
        EXPECT_EQ(c->GetPositionController()->NumKeys(), 2);
        EXPECT_NE(c->GetPositionController(), prs->GetPositionController());
        for (TimeValue t : {0, 800, 1600}) {
            Matrix3 m1, m2;
            Interval iv = FOREVER;
            prs->GetValue(t, &m1, iv);
            c->GetValue(t, &m2, iv);
            EXPECT_TRUE(m1.Equals(m2, 1e-5f)) << t;
        }
        copy->DeleteThis();
    }
    prs->DeleteThis();
}

}  // namespace
