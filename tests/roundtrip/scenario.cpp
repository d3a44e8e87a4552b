#include "scenario.h"

#include <random>

namespace roundtrip {
namespace {

const char* KindWord(Kind kind) {
    switch (kind) {
    case Kind::Box: return "Box";
    case Kind::Sphere: return "Ball";
    case Kind::Cylinder: return "Post";
    case Kind::Omni: return "Lamp";
    case Kind::Camera: return "View";
    case Kind::Dummy: return "Point";
    }
    return "Node";
}

class Draw {
public:
    explicit Draw(std::uint32_t seed) : rng_(seed) {}
    int Below(int n) { return static_cast<int>(rng_() % static_cast<std::uint32_t>(n)); }
    bool Chance(int percent) { return Below(100) < percent; }
    float Between(float low, float high) {
        return low + (high - low) * static_cast<float>(rng_() % 10000) / 10000.0f;
    }
    std::uint32_t Raw() { return rng_(); }
    std::uint32_t Colour() { return rng_() & 0xFFFFFF; }

private:
    std::mt19937 rng_;
};

float SizeOf(Kind kind, Draw& d) {
    switch (kind) {
    case Kind::Omni: return d.Between(0.2f, 3.0f);
    case Kind::Camera: return d.Between(30.0f, 90.0f);
    case Kind::Dummy: return d.Between(5.0f, 20.0f);
    default: return d.Between(5.0f, 60.0f);
    }
}

FileDesc MakeFile(int index, std::uint32_t seed, Draw& d) {
    FileDesc file;
    const std::string letter(1, static_cast<char>('A' + index));
    file.stem = "rt" + std::to_string(seed) + "_set" + letter;
    const int materials = 1 + d.Below(3);
    for (int i = 0; i < materials; ++i) file.materials.push_back({letter + "_Mat" + std::to_string(i + 1), d.Colour()});
    const int layers = d.Below(3);
    for (int i = 0; i < layers; ++i) file.layers.push_back(letter + "_Layer" + std::to_string(i + 1));
    const int count = 4 + d.Below(6);
    for (int i = 0; i < count; ++i) {
        NodeDesc n;
        // The first nodes cover every kind, so each file holds geometry, a light and a camera.
        n.kind = i < 6 ? static_cast<Kind>((i + index) % 6) : static_cast<Kind>(d.Below(6));
        n.name = letter + "_" + KindWord(n.kind) + std::to_string(i + 1);
        if (d.Chance(10)) n.name = letter + " " + KindWord(n.kind) + " no " + std::to_string(i + 1);  // a name with spaces
        n.parent = i > 0 && d.Chance(40) ? d.Below(i) : -1;
        n.x = d.Between(-200, 200), n.y = d.Between(-200, 200), n.z = d.Between(0, 100);
        n.turn = d.Chance(50) ? d.Between(-180, 180) : 0;
        n.wire = d.Colour();
        const bool geometry = n.kind == Kind::Box || n.kind == Kind::Sphere || n.kind == Kind::Cylinder;
        if (geometry && d.Chance(80)) n.material = d.Below(materials);
        if (layers && d.Chance(60)) n.layer = d.Below(layers);
        n.size = SizeOf(n.kind, d);
        n.hidden = d.Chance(10);
        n.renderable = !d.Chance(10);
        if (geometry && d.Chance(35)) n.bend = true, n.bendAngle = d.Between(-90, 90);
        file.nodes.push_back(n);
    }
    return file;
}

StepKind DrawStep(Draw& d, const Options& options) {
    // Weighted: edits are most of a run, operations come between them.
    struct Weight {
        StepKind kind;
        int weight;
    };
    static const Weight kWeights[] = {
        {StepKind::Move, 6},        {StepKind::Turn, 3},           {StepKind::ParentToLocal, 3},
        {StepKind::ParentToReferenced, 3}, {StepKind::ParentToRoot, 2}, {StepKind::Rename, 4},
        {StepKind::Material, 4},    {StepKind::Layer, 4},          {StepKind::Hide, 3},
        {StepKind::Freeze, 2},      {StepKind::Display, 3},        {StepKind::Render, 3},
        {StepKind::WireColour, 4},  {StepKind::Parameter, 5},      {StepKind::AddModifier, 2},
        {StepKind::ModifierParameter, 2}, {StepKind::Save, 2},     {StepKind::SaveAndReopen, 5},
        {StepKind::Reload, 4},      {StepKind::UnloadAndLoad, 2},  {StepKind::UnloadSaveAndReopen, 2},
        {StepKind::ChangeFile, 6},  {StepKind::Undo, 5},
    };
    int total = 0;
    for (const Weight& w : kWeights)
        if (options.modifierEdits || (w.kind != StepKind::AddModifier && w.kind != StepKind::ModifierParameter))
            total += w.weight;
    int pick = d.Below(total);
    for (const Weight& w : kWeights) {
        if (!options.modifierEdits && (w.kind == StepKind::AddModifier || w.kind == StepKind::ModifierParameter))
            continue;
        if (pick < w.weight) return w.kind;
        pick -= w.weight;
    }
    return StepKind::Save;
}

}  // namespace

Scenario Generate(std::uint32_t seed, const Options& options) {
    Draw d(seed);
    Scenario s;
    s.seed = seed;
    const int references = 1 + d.Below(3);
    for (int r = 0; r < references; ++r) {
        s.files.push_back(MakeFile(r, seed, d));
        s.prefixed.push_back(d.Chance(30));
    }
    const int layers = d.Below(3);
    for (int i = 0; i < layers; ++i) s.localLayers.push_back("Shot_Layer" + std::to_string(i + 1));
    const int locals = 1 + d.Below(3);
    for (int i = 0; i < locals; ++i) {
        LocalDesc l;
        l.name = "Shot_Local" + std::to_string(i + 1);
        l.box = d.Chance(50);
        if (d.Chance(70)) {
            l.parentRef = d.Below(references);
            l.parentNode = d.Below(static_cast<int>(s.files[l.parentRef].nodes.size()));
        }
        l.x = d.Between(-200, 200), l.y = d.Between(-200, 200), l.z = d.Between(0, 100);
        s.locals.push_back(l);
    }
    for (int i = 0; i < options.steps; ++i) {
        Step step;
        step.kind = DrawStep(d, options);
        for (auto& r : step.draw) r = d.Raw();
        s.steps.push_back(step);
    }
    return s;
}

const char* StepName(StepKind kind) {
    switch (kind) {
    case StepKind::Move: return "move";
    case StepKind::Turn: return "turn";
    case StepKind::ParentToLocal: return "parent to a local node";
    case StepKind::ParentToReferenced: return "parent to a referenced node";
    case StepKind::ParentToRoot: return "parent to the scene root";
    case StepKind::Rename: return "rename";
    case StepKind::Material: return "material";
    case StepKind::Layer: return "layer";
    case StepKind::Hide: return "hide or unhide";
    case StepKind::Freeze: return "freeze or unfreeze";
    case StepKind::Display: return "display switch";
    case StepKind::Render: return "render switch";
    case StepKind::WireColour: return "wire colour";
    case StepKind::Parameter: return "object parameter";
    case StepKind::AddModifier: return "add a modifier";
    case StepKind::ModifierParameter: return "modifier parameter";
    case StepKind::Save: return "save";
    case StepKind::SaveAndReopen: return "save and reopen";
    case StepKind::Reload: return "reload";
    case StepKind::UnloadAndLoad: return "unload and load";
    case StepKind::UnloadSaveAndReopen: return "unload, save and reopen";
    case StepKind::ChangeFile: return "change the reference file";
    case StepKind::Undo: return "undo";
    }
    return "?";
}

bool IsEdit(StepKind kind) { return kind < StepKind::Save; }

}  // namespace roundtrip
