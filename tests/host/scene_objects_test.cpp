// The host's objects, modifiers and derived objects: stack edits and their messages, modifier names and
// toggles with undo, save/load/clone of stacks with their contexts, every object class's parameters, and (with
// scene nodes) include/exclude lists, look-at targets and space-warp bindings.
#include "core/paramblock_classes.h"
#include "inode.h"
#include "io/scene_reader.h"
#include "io/scene_writer.h"
#include "iparamb2.h"
#include "istdplug.h"
#include "maxapi.h"
#include "scene/controllers/controller_classes.h"
#include "scene/objects/object_classes.h"
#include "test_objects.h"

#include <gtest/gtest.h>

using testobj::Item;

namespace {

template <class T = ReferenceTarget> T* make(SClass_ID sc, Class_ID id) {
    return dynamic_cast<T*>(static_cast<Animatable*>(CreateInstance(sc, id)));
}
Modifier* bend() { return make<Modifier>(OSM_CLASS_ID, HOST_BEND_CLASS_ID); }
Modifier* taper() { return make<Modifier>(OSM_CLASS_ID, HOST_TAPER_CLASS_ID); }
Object* box() { return make<Object>(GEOMOBJECT_CLASS_ID, HOST_BOX_CLASS_ID); }
bool alive(Animatable* a, AnimHandle h) { return Animatable::GetAnimByHandle(h) == a; }

struct SceneObjects : ::testing::Test {
    void SetUp() override {
        hostrt::RegisterParamBlockClasses();
        hostrt::RegisterControllerClasses();
        hostrt::RegisterObjectClasses();
        theHold.FlushUndoBuffer();
    }
    void TearDown() override {
        AnimateOff();
        while (theHold.GetBeginDepth() > 0) theHold.Cancel();
        theHold.FlushUndoBuffer();
    }
    static std::vector<std::pair<RefMessage, PartID>> heard(Item& w) {
        std::vector<std::pair<RefMessage, PartID>> m;
        for (const auto& h : w.heard) m.emplace_back(h.message, h.part);
        w.heard.clear();
        return m;
    }
    static ReferenceTarget* roundTrip(ReferenceTarget* target) {
        auto image = hostrt::ParseSceneFile(hostrt::WriteSceneFile({target}, L"objects"), L"objects");
        return hostrt::InstantiateScene(image, L"objects").roots.at(0);
    }
    using Heard = std::vector<std::pair<RefMessage, PartID>>;
    const Heard kStackChange{{REFMSG_MODIFIER_STACK_CHANGED, PART_ALL}, {REFMSG_CHANGE, PART_OBJECT_CHAIN}};
};

TEST_F(SceneObjects, StackEditsSendStackAndChainMessages) {
    Object* base = box();
    IDerivedObject* d = CreateDerivedObject(base);
    Item watcher("node", 1);
    watcher.ReplaceReference(0, d);
    EXPECT_EQ(d->SuperClassID(), GEN_DERIVOB_CLASS_ID);
    EXPECT_FALSE(d->IsWorldSpace());
    EXPECT_EQ(d->GetObjRef(), base);

    Modifier *b1 = bend(), *t1 = taper(), *b2 = bend();
    EXPECT_EQ(b1->SuperClassID(), OSM_CLASS_ID);
    d->AddModifier(b1);
    EXPECT_EQ(heard(watcher), kStackChange);
    d->AddModifier(t1, nullptr, 1);  // below the bend
    Matrix3 tm = TransMatrix(Point3(1, 2, 3));
    ModContext mc(&tm, nullptr);
    d->AddModifier(b2, &mc, 0);  // on top
    ASSERT_EQ(d->NumModifiers(), 3);
    EXPECT_EQ(d->GetModifier(0), b2);
    EXPECT_EQ(d->GetModifier(1), b1);
    EXPECT_EQ(d->GetModifier(2), t1);
    ASSERT_NE(d->GetModContext(0)->tm, nullptr);
    EXPECT_NE(d->GetModContext(0)->tm, &tm);  // the stack keeps its own copy
    EXPECT_EQ(*d->GetModContext(0)->tm, tm);
    EXPECT_EQ(d->GetModContext(1)->tm, nullptr);
    EXPECT_EQ(d->SubAnimName(2), MSTR(L"Taper"));
    EXPECT_EQ(d->SubAnim(3), base);
    EXPECT_TRUE(d->CanTransferReference(0));
    EXPECT_FALSE(d->CanTransferReference(1));

    // Replacing and deleting: the modifier that nothing needs any more goes.
    heard(watcher);
    const AnimHandle h1 = Animatable::GetHandleByAnim(t1);
    Modifier* t2 = taper();
    d->SetModifier(2, t2);
    EXPECT_FALSE(alive(t1, h1));
    d->DeleteModifier(1);
    EXPECT_EQ(d->NumModifiers(), 2);
    EXPECT_EQ(d->GetModifier(1), t2);
    Heard twice = kStackChange;
    twice.insert(twice.end(), kStackChange.begin(), kStackChange.end());
    EXPECT_EQ(heard(watcher), twice);

    // Undoing a deletion brings the same modifier and its context back, announced again.
    theHold.Begin();
    d->DeleteModifier(0);
    theHold.Accept(L"Delete modifier");
    EXPECT_EQ(d->NumModifiers(), 1);
    heard(watcher);
    ASSERT_TRUE(theHold.Undo());
    ASSERT_EQ(d->NumModifiers(), 2);
    EXPECT_EQ(d->GetModifier(0), b2);
    EXPECT_EQ(*d->GetModContext(0)->tm, tm);
    EXPECT_EQ(heard(watcher), kStackChange);

    // The base object is found through stacked derived objects; replacing the object below is structural too.
    IDerivedObject* outer = CreateDerivedObject(d);
    EXPECT_EQ(outer->FindBaseObject(), base);
    Object* sphere = make<Object>(GEOMOBJECT_CLASS_ID, HOST_SPHERE_CLASS_ID);
    d->ReferenceObject(sphere);
    EXPECT_EQ(heard(watcher), kStackChange);
    EXPECT_EQ(outer->FindBaseObject(), sphere);
    outer->DeleteThis();
}

TEST_F(SceneObjects, ModifierNamesAndTogglesSendTheirMessagesAndUndo) {
    Modifier* m = bend();
    Item watcher("w", 1);
    watcher.ReplaceReference(0, m);
    EXPECT_EQ(m->GetName(), MSTR(L"Bend"));
    m->SetName(L"Bend");  // what the user sees does not change
    EXPECT_TRUE(heard(watcher).empty());

    theHold.Begin();
    m->SetName(L"Twist");
    EXPECT_EQ(heard(watcher), (Heard{{REFMSG_NODE_NAMECHANGE, PART_ALL}, {REFMSG_MODIFIER_NAME_CHANGED, PART_ALL}}));
    m->DisableMod();
    m->DisableModInViews();
    m->DisableModInViews();
    m->EnableModInRender();
    EXPECT_EQ(heard(watcher), (Heard{{REFMSG_CHANGE, PART_ALL}, {REFMSG_CHANGE, PART_ALL}}));
    theHold.Accept(L"Edit modifier");
    EXPECT_FALSE(m->IsEnabled());
    EXPECT_FALSE(m->IsEnabledInViews());
    EXPECT_TRUE(m->IsEnabledInRender());

    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(m->GetName(), MSTR(L"Bend"));
    EXPECT_TRUE(m->IsEnabled());
    EXPECT_TRUE(m->IsEnabledInViews());
    auto undone = heard(watcher);
    const std::pair<RefMessage, PartID> renamed{REFMSG_MODIFIER_NAME_CHANGED, PART_ALL};
    EXPECT_EQ(std::count(undone.begin(), undone.end(), renamed), 1);
    ASSERT_TRUE(theHold.Redo());
    EXPECT_EQ(m->GetName(), MSTR(L"Twist"));
    EXPECT_FALSE(m->IsEnabled());
}

TEST_F(SceneObjects, DerivedObjectSaveLoadAndCloneKeepStackAndContexts) {
    Object* base = box();
    base->GetParamBlock(0)->SetValue(box_length, 0, 40.f);
    IDerivedObject* d = CreateDerivedObject(base);
    Matrix3 tm = RotateZMatrix(0.5f) * TransMatrix(Point3(1, 2, 3));
    Box3 bounds(Point3(-1, -2, -3), Point3(1, 2, 3));
    ModContext withBoth(&tm, &bounds), boxOnly(nullptr, &bounds);
    Modifier *b = bend(), *t = taper();
    b->SetName(L"B1");
    t->DisableModInRender();
    d->AddModifier(t, &boxOnly);
    d->AddModifier(b, &withBoth);
    IDerivedObject* ws = CreateWSDerivedObject(d);

    for (ReferenceTarget* copy : {roundTrip(ws), CloneRefHierarchy(ws)}) {
        auto* cws = dynamic_cast<IDerivedObject*>(copy);
        ASSERT_NE(cws, nullptr);
        EXPECT_TRUE(cws->IsWorldSpace());
        auto* cd = dynamic_cast<IDerivedObject*>(cws->GetObjRef());
        ASSERT_NE(cd, nullptr);
        EXPECT_NE(cd, d);
        EXPECT_FALSE(cd->IsWorldSpace());
        ASSERT_EQ(cd->NumModifiers(), 2);
        EXPECT_EQ(cd->GetModifier(0)->GetName(), MSTR(L"B1"));
        EXPECT_EQ(cd->GetModifier(1)->ClassID(), HOST_TAPER_CLASS_ID);
        EXPECT_FALSE(cd->GetModifier(1)->IsEnabledInRender());
        EXPECT_TRUE(cd->GetModifier(1)->IsEnabledInViews());
        const ModContext* c0 = cd->GetModContext(0);
        const ModContext* c1 = cd->GetModContext(1);
        ASSERT_TRUE(c0->tm && c0->box && !c1->tm && c1->box);
        EXPECT_EQ(*c0->tm, tm);
        EXPECT_EQ(*c0->box, bounds);
        EXPECT_EQ(*c1->box, bounds);
        Object* cbase = cws->FindBaseObject();
        ASSERT_NE(cbase, base);
        EXPECT_EQ(cbase->GetParamBlock(0)->GetFloat(box_length), 40.f);
        copy->DeleteThis();
    }
    ws->DeleteThis();
}

TEST_F(SceneObjects, EveryObjectClassHasItsParametersInItsBlock) {
    struct Case {
        SClass_ID sc;
        Class_ID id;
        const MCHAR* name;
        ParamID param;
        float def;
    };
    const Case cases[] = {
        {GEOMOBJECT_CLASS_ID, HOST_BOX_CLASS_ID, L"Box", box_height, 25.f},
        {GEOMOBJECT_CLASS_ID, HOST_SPHERE_CLASS_ID, L"Sphere", sphere_radius, 25.f},
        {GEOMOBJECT_CLASS_ID, HOST_BONE_CLASS_ID, L"Bone", bone_length, 40.f},
        {GEOMOBJECT_CLASS_ID, HOST_PARTICLE_CLASS_ID, L"Spray", particle_speed, 10.f},
        {SHAPE_CLASS_ID, HOST_CIRCLE_CLASS_ID, L"Circle", circle_radius, 10.f},
        {LIGHT_CLASS_ID, HOST_OMNI_LIGHT_CLASS_ID, L"Omni", light_multiplier, 1.f},
        {LIGHT_CLASS_ID, HOST_TARGET_SPOT_CLASS_ID, L"Target Spot", light_falloff, 45.f},
        {CAMERA_CLASS_ID, HOST_FREE_CAMERA_CLASS_ID, L"Free Camera", camera_fov, 45.f},
        {CAMERA_CLASS_ID, HOST_TARGET_CAMERA_CLASS_ID, L"Target Camera", camera_tdist, 160.f},
        {HELPER_CLASS_ID, Class_ID(DUMMY_CLASS_ID, 0), L"Dummy", dummy_size, 10.f},
        {HELPER_CLASS_ID, HOST_POINT_HELPER_CLASS_ID, L"Point", point_size, 20.f},
        {WSM_OBJECT_CLASS_ID, HOST_SPACE_WARP_CLASS_ID, L"Wind", spacewarp_strength, 1.f},
        {OSM_CLASS_ID, HOST_BEND_CLASS_ID, L"Bend", bend_angle, 0.f},
        {OSM_CLASS_ID, HOST_TAPER_CLASS_ID, L"Taper", taper_curve, 0.f},
        {WSM_CLASS_ID, HOST_SPACE_WARP_BINDING_CLASS_ID, L"Wind Binding", binding_strength, 1.f},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(MSTR(c.name).ToUTF8());
        auto* obj = make<BaseObject>(c.sc, c.id);
        ASSERT_NE(obj, nullptr);
        EXPECT_EQ(obj->SuperClassID(), c.sc);
        EXPECT_EQ(obj->GetObjectName(), MSTR(c.name));
        IParamBlock2* pb = obj->GetParamBlock(0);
        ASSERT_NE(pb, nullptr);
        EXPECT_EQ(obj->SubAnim(0), pb);
        EXPECT_EQ(pb->GetFloat(c.param), c.def);
        Control* ctrl = pb->GetController(c.param);
        ASSERT_NE(ctrl, nullptr);
        EXPECT_EQ(ctrl->SuperClassID(), CTRL_FLOAT_CLASS_ID);
        EXPECT_TRUE(pb->SetValue(c.param, 0, 7.5f));
        float inCtrl = 0;
        Interval iv = FOREVER;
        ctrl->GetValue(0, &inCtrl, iv);
        EXPECT_EQ(inCtrl, 7.5f);
        auto* loaded = dynamic_cast<BaseObject*>(roundTrip(obj));
        ASSERT_NE(loaded, nullptr);
        EXPECT_EQ(loaded->ClassID(), c.id);
        EXPECT_EQ(loaded->GetParamBlock(0)->GetFloat(c.param), 7.5f);
        EXPECT_NE(loaded->GetParamBlock(0)->GetController(c.param), ctrl);
        loaded->DeleteThis();
        obj->DeleteThis();
    }

    // Kinds: only the particle system answers the particle interface; lights have a list; the target has no block.
    Object* spray = make<Object>(GEOMOBJECT_CLASS_ID, HOST_PARTICLE_CLASS_ID);
    Object* b = box();
    EXPECT_TRUE(spray->IsParticleSystem());
    EXPECT_FALSE(b->IsParticleSystem());
    EXPECT_EQ(b->GetParamBlock(0)->GetController(box_lsegs), nullptr);
    auto* omni = make<LightObject>(LIGHT_CLASS_ID, HOST_OMNI_LIGHT_CLASS_ID);
    ASSERT_NE(omni->GetExclList(), nullptr);
    EXPECT_EQ(omni->GetParamBlock(0)->GetController(light_color)->SuperClassID(), CTRL_POINT3_CLASS_ID);
    EXPECT_EQ(omni->GetParamBlock(0)->GetColor(light_color), Color(1, 1, 1));
    auto* target = make<Object>(GEOMOBJECT_CLASS_ID, Class_ID(TARGET_CLASS_ID, 0));
    ASSERT_NE(target, nullptr);
    EXPECT_EQ(target->NumParamBlocks(), 0);

    // In animate mode a parameter set at a time becomes a key of its controller.
    AnimateOn();
    b->GetParamBlock(0)->SetValue(box_width, 1600, 45.f);
    AnimateOff();
    EXPECT_EQ(b->GetParamBlock(0)->GetController(box_width)->NumKeys(), 2);
    EXPECT_EQ(b->GetParamBlock(0)->GetFloat(box_width, 800), 35.f);
    for (ReferenceTarget* o : std::initializer_list<ReferenceTarget*>{spray, b, omni, target}) o->DeleteThis();
}

// ---- With scene nodes.

struct SceneObjectsWithNodes : SceneObjects {
    INode* node(Object* obj) { return GetCOREInterface()->CreateObjectNode(obj); }
    void TearDown() override {
        GetCOREInterface()->FileReset(TRUE);
        SceneObjects::TearDown();
    }
};

TEST_F(SceneObjectsWithNodes, LightListsKeepAnEmptyEntryForADeletedNode) {
    auto* light = make<LightObject>(LIGHT_CLASS_ID, HOST_OMNI_LIGHT_CLASS_ID);
    INode* lightNode = node(light);
    INode *a = node(box()), *b = node(box());
    ExclList* list = light->GetExclList();
    Item watcher("w", 1);
    watcher.ReplaceReference(0, light);

    EXPECT_EQ(list->AddNode(a), 0);
    EXPECT_EQ(list->AddNode(b), 1);
    EXPECT_EQ(list->AddNode(a), 0);
    EXPECT_EQ(list->Count(), 2);
    EXPECT_EQ(heard(watcher).size(), 2u);
    EXPECT_FALSE(light->IsRealDependency(a));
    // Changes of listed nodes are not the light's changes.
    Matrix3 moved = TransMatrix(Point3(5, 0, 0));
    b->SetNodeTM(0, moved);
    EXPECT_TRUE(heard(watcher).empty());

    GetCOREInterface()->DeleteNode(a);
    ASSERT_EQ(list->Count(), 2);
    EXPECT_EQ((*list)[0], nullptr);
    EXPECT_EQ((*list)[1], b);

    theHold.Begin();
    list->RemoveNode(0);
    list->SetInclude(TRUE);
    theHold.Accept(L"List");
    EXPECT_EQ(list->Count(), 1);
    EXPECT_TRUE(list->IsInclude());
    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(list->Count(), 2);
    EXPECT_EQ((*list)[1], b);
    EXPECT_FALSE(list->IsInclude());

    // A copy of the light with its node lists the same nodes; saved and loaded, the list keeps its entries.
    auto* copy = dynamic_cast<LightObject*>(CloneRefHierarchy(light));
    EXPECT_EQ((*copy->GetExclList())[1], b);
    copy->DeleteThis();
    EXPECT_EQ(lightNode->GetObjectRef(), light);
}

TEST_F(SceneObjectsWithNodes, TargetSpotAimsAtItsTargetThroughTheLookAtController) {
    INode* spot = node(make<Object>(LIGHT_CLASS_ID, HOST_TARGET_SPOT_CLASS_ID));
    INode* target = node(make<Object>(GEOMOBJECT_CLASS_ID, Class_ID(TARGET_CLASS_ID, 0)));
    Matrix3 at = TransMatrix(Point3(10, 0, 10));
    target->SetNodeTM(0, at);
    Control* lookAt = CreateLookatControl(target);
    EXPECT_EQ(lookAt->ClassID(), Class_ID(LOOKAT_CONTROL_CLASS_ID, 0));
    EXPECT_FALSE(lookAt->IsLeaf());
    spot->SetTMController(lookAt);
    Matrix3 from = TransMatrix(Point3(0, 0, 10));
    spot->SetNodeTM(0, from);

    Matrix3 tm = spot->GetNodeTM(0);
    EXPECT_TRUE(tm.GetTrans().Equals(Point3(0, 0, 10), 1e-4f));
    EXPECT_TRUE((-tm.GetRow(2)).Equals(Point3(1, 0, 0), 1e-4f));  // looks down its negative Z axis
    Matrix3 away = TransMatrix(Point3(0, -10, 10));
    target->SetNodeTM(0, away);
    EXPECT_TRUE((-spot->GetNodeTM(0).GetRow(2)).Equals(Point3(0, -1, 0), 1e-4f));

    EXPECT_EQ(lookAt->GetTarget(), target);
    GetCOREInterface()->DeleteNode(target);
    EXPECT_EQ(lookAt->GetTarget(), nullptr);
}

TEST_F(SceneObjectsWithNodes, SpaceWarpBindingHoldsItsSpaceWarpNode) {
    INode* warp = node(make<Object>(WSM_OBJECT_CLASS_ID, HOST_SPACE_WARP_CLASS_ID));
    INode* bound = node(box());
    auto* binding = make<Modifier>(WSM_CLASS_ID, HOST_SPACE_WARP_BINDING_CLASS_ID);
    binding->GetParamBlock(0)->SetValue(binding_node, 0, warp);
    IDerivedObject* ws = bound->CreateWSMDerivedObject();
    ASSERT_NE(ws, nullptr);
    EXPECT_TRUE(ws->IsWorldSpace());
    ws->AddModifier(binding);
    EXPECT_EQ(binding->GetParamBlock(0)->GetINode(binding_node), warp);
    EXPECT_EQ(bound->GetBaseObject()->ClassID(), HOST_BOX_CLASS_ID);
    GetCOREInterface()->DeleteNode(warp);
    EXPECT_EQ(binding->GetParamBlock(0)->GetINode(binding_node), nullptr);
    EXPECT_EQ(ws->GetModifier(0), binding);
}

TEST_F(SceneObjectsWithNodes, ModifierEditsOfTheHostAreBracketedByTheirNotifications) {
    static std::vector<std::string> log;
    log.clear();
    auto note = [](void*, NotifyInfo* info) {
        auto* p = static_cast<NotifyModAddDelParam*>(info->callParam);
        log.push_back(std::to_string(info->intcode) + ":" + p->mod->ClassName().ToUTF8() + ":" +
                      (p->node ? "node" : "none"));
    };
    NOTIFYPROC proc = note;
    for (int code : {NOTIFY_PRE_MODIFIER_ADDED, NOTIFY_POST_MODIFIER_ADDED, NOTIFY_PRE_MODIFIER_DELETED,
                     NOTIFY_POST_MODIFIER_DELETED})
        RegisterNotification(proc, nullptr, code);
    INode* n = node(box());
    Modifier* first = bend();
    Modifier* second = taper();
    const std::string b = first->ClassName().ToUTF8(), t = second->ClassName().ToUTF8();
    Interface* ip = GetCOREInterface();
    ASSERT_TRUE(ip->AddModifier(*n, *first));
    EXPECT_FALSE(ip->AddModifier(*n, *second, 5));  // out of range: nothing happens
    ASSERT_TRUE(ip->AddModifier(*n, *second, 1));   // below the bend
    auto* stack = static_cast<IDerivedObject*>(n->GetObjectRef());
    ASSERT_EQ(stack->NumModifiers(), 2);
    EXPECT_EQ(stack->GetModifier(0), first);
    EXPECT_EQ(stack->GetModifier(1), second);
    EXPECT_TRUE(ip->DeleteModifier(*n, *first));
    EXPECT_FALSE(ip->DeleteModifier(*n, *first));
    EXPECT_EQ(log, (std::vector<std::string>{"113:" + b + ":node", "114:" + b + ":node", "113:" + t + ":node",
                                             "114:" + t + ":node", "115:" + b + ":node", "116:" + b + ":node"}));
    UnRegisterNotification(proc, nullptr);
}

}  // namespace
