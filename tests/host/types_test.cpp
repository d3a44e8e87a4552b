// Host value types: out-of-range indexing, wide formatting, matrices.
#include "max.h"

#include <gtest/gtest.h>

#include <cstring>

TEST(HostTypes, OutOfRangeIndexingThrowsTheHostMessages) {
    Tab<int> tab;
    tab.Append(7);
    EXPECT_EQ(tab[0], 7);
    try {
        (void)tab[1];
        FAIL() << "no exception";
    } catch (const MAXException& e) {
        EXPECT_EQ(e.message, MSTR(L"Invalid index passed into a Max SDK Tab::operator[]"));
        EXPECT_EQ(e.error, 0);
    }
    MaxSDK::Array<int> arr;
    try {
        (void)arr[0];
        FAIL() << "no exception";
    } catch (const MAXException& e) {
        EXPECT_EQ(e.message, MSTR(L"Argument index out of bounds, passed into a MaxSDK::Array::operator[]"));
    }
    Tab<int*> ptrs;
    ptrs.SetCount(3);
    EXPECT_EQ(ptrs[2], nullptr);
    int two[] = {1, 2};
    tab.Insert(0, 2, two);
    EXPECT_EQ(tab.Delete(1, 1), 2);
    EXPECT_EQ(tab[1], 7);
}

TEST(HostTypes, WideFormattingReadsPercentSAsAWideString) {
    const MCHAR* name = L"Box\u00e9";
    MSTR s;
    s.printf(L"\nVD Merge Time: %f [%s] %d %hs %S %5.1f%%", 1.5, name, 42, "narrow", "also", 2.25);
    EXPECT_EQ(s, MSTR(L"\nVD Merge Time: 1.500000 [Box\u00e9] 42 narrow also   2.2%"));
    EXPECT_EQ(MSTR(L"x").Length(), 1);
    std::wstring longText(5000, L'a');
    MSTR big;
    big.printf(L"%s!", longText.c_str());
    EXPECT_EQ(big.Length(), 5001);
    MSTR utf(L"Caf\u00e9 \U0001F600");
    EXPECT_EQ(WStr::FromUTF8(utf.ToUTF8()), utf);
    EXPECT_EQ(WStr::FromUTF8("\xff" "a"), MSTR(L"\uFFFDa"));
    EXPECT_EQ(MSTR(L"C:\\dir/file.max").last(L'/'), 6);
    EXPECT_TRUE(MSTR(L"Abc").EqualsNoCase(L"aBC"));
}

TEST(HostTypes, MatrixLayoutAndComposition) {
    Matrix3 m;
    EXPECT_TRUE(m.IsIdentity());
    EXPECT_EQ(m.flags, DWORD(MAT_IDENT));
    Matrix3 local = TransMatrix(Point3(1.f, 0.f, 0.f));
    Matrix3 parent = RotateZMatrix(float(M_PI / 2)) * TransMatrix(Point3(0.f, 0.f, 5.f));
    Point3 p = Point3(0.f, 0.f, 0.f) * (local * parent);  // local first, then the parent
    EXPECT_TRUE(p.Equals(Point3(0.f, 1.f, 5.f), 1e-5f));
    Matrix3 inv = Inverse(local * parent);
    EXPECT_TRUE((local * parent * inv).Equals(Matrix3()));
    unsigned char bytes[52];
    std::memcpy(bytes, &local, 52);
    Matrix3 back(FALSE);
    std::memcpy(&back, bytes, 52);
    EXPECT_EQ(back, local);
    BitArray bits(4);
    bits.Set(1);
    bits.Set(3);
    EXPECT_EQ(bits.NumberSet(), 2);
    EXPECT_EQ(bits[3], 1);
    EXPECT_EQ(bits[9], 0);
}
