// The placeholder objects: the fixed-matrix controller in nodes and scene files, and the empty shape's
// property list.
#include "core/class_directory.h"
#include "io/chunk_reader.h"
#include "io/chunk_writer.h"
#include "inode.h"
#include "max.h"
#include "object.h"
#include "plugapi.h"
#include "saved_objects.h"
#include "scene/scene.h"
#include "vandrels_library.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <unistd.h>

namespace {

using vtest::LoadInto;

constexpr Class_ID kEmptyBaseObject(0x8663DFA5, 0x3F273888);
constexpr Class_ID kEmptyController(0x8663DFA5, 0x3F273889);
constexpr Class_ID kEmptyShape(0x8663DFA5, 0x3F273891);

template <class T> T* Make(SClass_ID sc, Class_ID id) {
    auto* made = dynamic_cast<T*>(static_cast<Animatable*>(CreateInstance(sc, id)));
    EXPECT_NE(made, nullptr);
    return made;
}

Control* MakeController() { return Make<Control>(CTRL_MATRIX3_CLASS_ID, kEmptyController); }

// A transform with rotation, scale and translation, and a flag word no computation would give.
Matrix3 StoredMatrix() {
    Matrix3 tm = RotateZMatrix(0.7f) * ScaleMatrix(Point3(2.0f, 1.0f, 0.5f)) * TransMatrix(Point3(10.0f, -4.0f, 3.0f));
    tm.SetIdentFlags(0xA5000003);
    return tm;
}

// The controller's data as it is saved: one chunk 0x0000 with the 52 bytes of the matrix.
std::vector<std::uint8_t> MatrixChunk(const Matrix3& tm, ULONG bytes = 52, USHORT id = 0x0000) {
    hostrt::ChunkWriter w;
    ULONG n = 0;
    w.BeginChunk(id);
    w.Write(&tm, bytes, &n);
    w.EndChunk();
    return w.Bytes();
}

Matrix3 ValueOf(Control* c, TimeValue t, GetSetMethod method, Matrix3 incoming = Matrix3()) {
    Interval valid = FOREVER;
    c->GetValue(t, &incoming, valid, method);
    return incoming;
}

bool SameBytes(const Matrix3& a, const Matrix3& b) { return std::memcmp(&a, &b, sizeof(Matrix3)) == 0; }

class Placeholders : public ::testing::Test {
protected:
    void SetUp() override {
        hostrt::RegisterBuiltinClasses();
        vtest::VandrelsLibrary();
        hostrt::Scene::Instance().ResetScene();
        file_ = vtest::TempSceneFile("vandrels_placeholders");
    }
    void TearDown() override {
        hostrt::Scene::Instance().ResetScene();
        std::filesystem::remove(file_.ToUTF8());
    }
    MSTR file_;
};

}  // namespace

TEST_F(Placeholders, ControllerAnswersItsMatrixAndIgnoresSets) {
    Control* c = MakeController();
    ASSERT_NE(c, nullptr);
    EXPECT_TRUE(ValueOf(c, 0, CTRL_ABSOLUTE).IsIdentity());  // a new controller holds the identity

    const Matrix3 m = StoredMatrix();
    ASSERT_EQ(LoadInto(c, MatrixChunk(m)), IO_OK);
    Matrix3 other = TransMatrix(Point3(1.0f, 1.0f, 1.0f));
    c->SetValue(0, &other, 1, CTRL_ABSOLUTE);
    EXPECT_TRUE(SameBytes(ValueOf(c, 0, CTRL_ABSOLUTE), m));
    EXPECT_TRUE(SameBytes(ValueOf(c, 9600, CTRL_ABSOLUTE), m));

    const Matrix3 parent = RotateXMatrix(0.3f) * TransMatrix(Point3(0.0f, 5.0f, 0.0f));
    EXPECT_TRUE(ValueOf(c, 0, CTRL_RELATIVE, parent).Equals(m * parent));

    // A clone holds its own copy of the matrix.
    auto* clone = dynamic_cast<Control*>(CloneRefHierarchy(c));
    ASSERT_NE(clone, nullptr);
    EXPECT_NE(clone, c);
    EXPECT_EQ(clone->ClassID(), kEmptyController);
    EXPECT_TRUE(SameBytes(ValueOf(clone, 0, CTRL_ABSOLUTE), m));
    clone->DeleteThis();
    c->DeleteThis();
}

TEST_F(Placeholders, ControllerRefusesDamagedData) {
    Control* c = MakeController();
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(LoadInto(c, {}), IO_ERROR);                              // no chunk at all
    EXPECT_EQ(LoadInto(c, MatrixChunk(StoredMatrix(), 40)), IO_ERROR);  // a short matrix
    EXPECT_TRUE(ValueOf(c, 0, CTRL_ABSOLUTE).IsIdentity());             // and nothing half-read is kept
    // The chunk is taken whatever its id.
    EXPECT_EQ(LoadInto(c, MatrixChunk(StoredMatrix(), 52, 0x0042)), IO_OK);
    EXPECT_TRUE(SameBytes(ValueOf(c, 0, CTRL_ABSOLUTE), StoredMatrix()));
    c->DeleteThis();
}

// A node driven by the controller stays at the stored transform at any time, below a moved parent too, and
// the scene file keeps the matrix byte for byte.
TEST_F(Placeholders, NodeKeepsStoredTransformThroughSaveAndOpen) {
    Interface* ip = GetCOREInterface();
    const Matrix3 m = StoredMatrix();
    Control* c = MakeController();
    ASSERT_EQ(LoadInto(c, MatrixChunk(m)), IO_OK);
    INode* node = ip->CreateObjectNode(Make<Object>(GEOMOBJECT_CLASS_ID, kEmptyBaseObject));
    node->SetName(L"Held");
    ASSERT_TRUE(node->SetTMController(c));
    EXPECT_TRUE(node->GetNodeTM(0).Equals(m));
    EXPECT_TRUE(node->GetNodeTM(4800).Equals(m));

    INode* parent = ip->CreateObjectNode(Make<Object>(GEOMOBJECT_CLASS_ID, kEmptyBaseObject));
    Matrix3 moved = RotateYMatrix(1.1f) * TransMatrix(Point3(7.0f, 8.0f, 9.0f));
    parent->SetNodeTM(0, moved);
    parent->AttachChild(node, 0);
    EXPECT_TRUE(node->GetNodeTM(0).Equals(m * moved));
    EXPECT_TRUE(node->GetNodeTM(2400).Equals(m * moved));

    ASSERT_NE(ip->SaveToFile(file_.data()), 0);
    const auto saved = vtest::SavedDataOf(vtest::ReadSavedObjects(file_), kEmptyController);
    ASSERT_EQ(saved.size(), 1u);
    EXPECT_EQ(saved[0], MatrixChunk(m));  // one chunk 0x0000 of exactly 52 bytes

    ip->FileReset();
    ASSERT_NE(ip->LoadFromFile(file_.data()), 0);
    INode* reopened = ip->GetINodeByName(L"Held");
    ASSERT_NE(reopened, nullptr);
    Control* tmc = reopened->GetTMController();
    ASSERT_NE(tmc, nullptr);
    EXPECT_EQ(tmc->ClassID(), kEmptyController);
    EXPECT_TRUE(SameBytes(ValueOf(tmc, 0, CTRL_ABSOLUTE), m));  // flag word included
    EXPECT_EQ(reopened->GetObjectRef()->ClassID(), kEmptyBaseObject);
    EXPECT_TRUE(reopened->GetNodeTM(0).Equals(m * moved));
}

namespace {

// A property that counts its deletions.
struct CountedProperty : AnimProperty {
    CountedProperty(DWORD id, int* deleted, BOOL keep = FALSE) : id_(id), deleted_(deleted), keep_(keep) {}
    ~CountedProperty() override { ++*deleted_; }
    DWORD ID() override { return id_; }
    BOOL DontDelete() override { return keep_; }
    DWORD id_;
    int* deleted_;
    BOOL keep_;
};

}  // namespace

TEST_F(Placeholders, EmptyShapeKeepsPropertiesAndClonesEmpty) {
    auto* shape = Make<Object>(SHAPE_CLASS_ID, kEmptyShape);
    ASSERT_NE(shape, nullptr);
    EXPECT_FALSE(shape->CanCopyAnim());
    int deleted = 0;
    auto* first = new CountedProperty(7, &deleted);
    auto* second = new CountedProperty(7, &deleted);
    CountedProperty kept(9, &deleted, TRUE);
    shape->SetProperty(7, first);
    shape->SetProperty(7, second);
    shape->SetProperty(9, &kept);
    EXPECT_EQ(shape->GetProperty(7), first);  // the first match wins
    EXPECT_EQ(shape->GetProperty(9), &kept);
    EXPECT_EQ(shape->GetProperty(8), nullptr);

    auto* clone = dynamic_cast<Object*>(CloneRefHierarchy(shape));
    ASSERT_NE(clone, nullptr);
    EXPECT_EQ(clone->ClassID(), kEmptyShape);
    EXPECT_EQ(clone->GetProperty(7), nullptr);
    clone->DeleteThis();

    shape->DeleteThis();
    EXPECT_EQ(deleted, 2);  // the shape owned the two it took; the one marked "do not delete" lives on
}
