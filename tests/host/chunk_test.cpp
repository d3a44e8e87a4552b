// Chunk streams: the byte layout, nesting, end of levels, skipping, wide strings and damaged input.
#include "io/chunk_reader.h"
#include "io/chunk_writer.h"

#include <gtest/gtest.h>

using hostrt::ChunkReader;
using hostrt::ChunkWriter;

namespace {

std::uint32_t u32At(const std::vector<std::uint8_t>& b, std::size_t at) {
    return std::uint32_t(b[at]) | (std::uint32_t(b[at + 1]) << 8) | (std::uint32_t(b[at + 2]) << 16) |
           (std::uint32_t(b[at + 3]) << 24);
}

void put(ChunkWriter& w, std::uint32_t v) {
    ULONG n = 0;
    ASSERT_EQ(w.Write(&v, sizeof v, &n), IO_OK);
    ASSERT_EQ(n, sizeof v);
}

std::uint32_t get(ChunkReader& r) {
    std::uint32_t v = 0;
    ULONG n = 0;
    EXPECT_EQ(r.Read(&v, sizeof v, &n), IO_OK);
    return v;
}

}  // namespace

TEST(ChunkStream, LayoutAndNesting) {
    ChunkWriter w;
    w.BeginChunk(0x0102);  // container
    EXPECT_EQ(w.CurChunkDepth(), 1);
    w.BeginChunk(0x0003);
    put(w, 0xAABBCCDD);
    EXPECT_EQ(w.CurChunkDepth(), 2);
    w.EndChunk();
    w.BeginChunk(0x0004);  // nested three deep
    w.BeginChunk(0x0005);
    w.EndChunk();
    w.EndChunk();
    w.EndChunk();
    w.BeginChunk(0x0006);  // a second top-level chunk, empty
    w.EndChunk();
    EXPECT_EQ(w.CurChunkDepth(), 0);
    EXPECT_TRUE(w.Error().empty());

    const auto& b = w.Bytes();
    ASSERT_EQ(b.size(), 6u + 10 + 6 + 6 + 6);
    EXPECT_EQ(b[0], 0x02);
    EXPECT_EQ(b[1], 0x01);
    EXPECT_EQ(u32At(b, 2), 0x80000000u | 28u);  // holds sub-chunks: top bit set
    EXPECT_EQ(u32At(b, 8), 10u);                 // data chunk: header + 4 bytes, top bit clear
    EXPECT_EQ(u32At(b, 12), 0xAABBCCDDu);
    EXPECT_EQ(u32At(b, 18), 0x80000000u | 12u);
    EXPECT_EQ(u32At(b, 24), 6u);
    EXPECT_EQ(u32At(b, 30), 6u);

    ChunkReader r(b.data(), b.size());
    ASSERT_EQ(r.OpenChunk(), IO_OK);
    EXPECT_EQ(r.CurChunkID(), 0x0102);
    EXPECT_EQ(r.CurChunkLength(), 22u);
    EXPECT_TRUE(r.CurChunkIsContainer());
    ASSERT_EQ(r.OpenChunk(), IO_OK);
    EXPECT_EQ(r.CurChunkID(), 0x0003);
    EXPECT_EQ(r.CurChunkDepth(), 2);
    EXPECT_EQ(get(r), 0xAABBCCDDu);
    // A data chunk has no sub-chunks: once read, the level is at its end.
    EXPECT_EQ(r.OpenChunk(), IO_END);
    ASSERT_EQ(r.CloseChunk(), IO_OK);
    ASSERT_EQ(r.OpenChunk(), IO_OK);
    ASSERT_EQ(r.OpenChunk(), IO_OK);
    EXPECT_EQ(r.CurChunkID(), 0x0005);
    EXPECT_EQ(r.CurChunkDepth(), 3);
    EXPECT_EQ(r.CloseChunk(), IO_OK);
    EXPECT_EQ(r.OpenChunk(), IO_END);  // end of the parent 0x0004
    EXPECT_EQ(r.CloseChunk(), IO_OK);
    EXPECT_EQ(r.OpenChunk(), IO_END);  // end of 0x0102
    EXPECT_EQ(r.CloseChunk(), IO_OK);
    ASSERT_EQ(r.OpenChunk(), IO_OK);
    EXPECT_EQ(r.CurChunkID(), 0x0006);
    EXPECT_EQ(r.CurChunkLength(), 0u);
    EXPECT_EQ(r.CloseChunk(), IO_OK);
    EXPECT_EQ(r.OpenChunk(), IO_END);
    EXPECT_EQ(r.CloseChunk(), IO_ERROR);  // nothing open
}

TEST(ChunkStream, CloseChunkSkipsWhatWasNotReadAndReadsStayInTheirChunk) {
    ChunkWriter w;
    w.BeginChunk(0x0010);
    w.BeginChunk(0x7777);  // unknown to the reader, with its own sub-chunks
    w.BeginChunk(0x0001);
    put(w, 1);
    w.EndChunk();
    w.EndChunk();
    w.BeginChunk(0x0011);
    put(w, 1);
    put(w, 2);
    w.EndChunk();
    w.BeginChunk(0x0012);
    put(w, 42);
    w.EndChunk();
    w.EndChunk();

    ChunkReader r(w.Bytes().data(), w.Bytes().size());
    ASSERT_EQ(r.OpenChunk(), IO_OK);
    std::vector<USHORT> seen;
    std::uint32_t value = 0;
    while (r.OpenChunk() == IO_OK) {
        seen.push_back(r.CurChunkID());
        if (r.CurChunkID() == 0x0011) {
            // Reading past the chunk's end answers an error with the bytes it has, never the next chunk's.
            std::uint8_t buf[12] = {};
            ULONG got = 99;
            EXPECT_EQ(r.Read(buf, sizeof buf, &got), IO_ERROR);
            EXPECT_EQ(got, 8u);
            EXPECT_EQ(buf[4], 2);
            EXPECT_EQ(buf[8], 0);
            EXPECT_EQ(r.Read(buf, 1, &got), IO_ERROR);
            EXPECT_EQ(got, 0u);
        }
        if (r.CurChunkID() == 0x0012) value = get(r);
        ASSERT_EQ(r.CloseChunk(), IO_OK);
    }
    EXPECT_EQ(seen, (std::vector<USHORT>{0x7777, 0x0011, 0x0012}));
    EXPECT_EQ(value, 42u);
}

TEST(ChunkStream, WideStringsAsUtf16) {
    const std::wstring text = L"Caf\u00E9 \U0001F600 \u4E2D";  // a character outside the BMP
    ChunkWriter w;
    w.BeginChunk(0x0001);
    ASSERT_EQ(w.WriteWString(text.c_str()), IO_OK);
    w.EndChunk();
    w.BeginChunk(0x0002);
    w.WriteWString(L"");
    w.EndChunk();

    const auto& b = w.Bytes();
    // "Café " is 5 units, the emoji a surrogate pair, then " 中" and the terminating zero unit.
    ASSERT_EQ(u32At(b, 2), 6u + 2 * (5 + 2 + 2 + 1));
    EXPECT_EQ(b[6 + 10], 0x3D);  // U+1F600 = D83D DE00, little-endian
    EXPECT_EQ(b[6 + 11], 0xD8);
    EXPECT_EQ(b[6 + 12], 0x00);
    EXPECT_EQ(b[6 + 13], 0xDE);

    ChunkReader r(b.data(), b.size());
    ASSERT_EQ(r.OpenChunk(), IO_OK);
    MCHAR* s = nullptr;
    ASSERT_EQ(r.ReadWStringChunk(&s), IO_OK);
    ASSERT_NE(s, nullptr);
    EXPECT_EQ(std::wstring(s), text);
    r.CloseChunk();
    ASSERT_EQ(r.OpenChunk(), IO_OK);
    MSTR empty(L"x");
    ASSERT_EQ(r.ReadWStringChunk(empty), IO_OK);
    EXPECT_EQ(empty, MSTR(L""));
    EXPECT_EQ(std::wstring(s), text);  // the first string is still owned by the reader

    // A lone surrogate on either side is no character: it reads back as U+FFFD.
    const std::uint8_t lone[] = {0x01, 0x00, 10, 0, 0, 0, 0x3D, 0xD8, 0x41, 0x00};
    ChunkReader lr(lone, sizeof lone);
    ASSERT_EQ(lr.OpenChunk(), IO_OK);
    ASSERT_EQ(lr.ReadWStringChunk(&s), IO_OK);
    EXPECT_EQ(std::wstring(s), L"\uFFFDA");
}

TEST(ChunkStream, DamagedHeadersAnswerErrors) {
    struct Case {
        const char* what;
        std::vector<std::uint8_t> bytes;
        bool truncated;
    };
    const std::vector<Case> cases = {
        {"header cut short", {0x01, 0x00, 0x06}, true},
        {"length below the header", {0x01, 0x00, 0x05, 0, 0, 0}, false},
        {"length past the end", {0x01, 0x00, 0x20, 0, 0, 0, 1, 2}, true},
        {"huge length", {0x01, 0x00, 0xFF, 0xFF, 0xFF, 0x7F}, true},
        // A container of 12 bytes whose sub-chunk claims 16.
        {"sub-chunk past its parent", {0x01, 0x00, 12, 0, 0, 0x80, 0x02, 0x00, 16, 0, 0, 0, 0, 0, 0, 0}, false},
        // A container of 9 bytes with only 3 bytes of a sub-chunk header.
        {"sub-chunk header cut", {0x01, 0x00, 9, 0, 0, 0x80, 0x02, 0x00, 0x06}, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        ChunkReader r(c.bytes.data(), c.bytes.size());
        IOResult res = r.OpenChunk();
        if (res == IO_OK) res = r.OpenChunk();
        EXPECT_EQ(res, IO_ERROR);
        EXPECT_EQ(r.LastError().truncated, c.truncated);
        EXPECT_FALSE(r.LastError().what.empty());
    }

    // Opening sub-chunks of a chunk that holds data is an error, not a misreading of the data.
    const std::uint8_t data[] = {0x01, 0x00, 12, 0, 0, 0, 0x02, 0x00, 6, 0, 0, 0};
    ChunkReader r(data, sizeof data);
    ASSERT_EQ(r.OpenChunk(), IO_OK);
    EXPECT_EQ(r.OpenChunk(), IO_ERROR);

    ChunkReader none(nullptr, 0);
    EXPECT_EQ(none.OpenChunk(), IO_END);
}

TEST(ChunkStream, WriterReportsMisuse) {
    ChunkWriter mixed;
    mixed.BeginChunk(0x0001);
    put(mixed, 1);
    mixed.BeginChunk(0x0002);  // a sub-chunk after data
    mixed.EndChunk();
    mixed.EndChunk();
    EXPECT_NE(mixed.Error().find("0x0001"), std::string::npos);

    ChunkWriter unbalanced;
    unbalanced.EndChunk();
    EXPECT_FALSE(unbalanced.Error().empty());
    EXPECT_TRUE(unbalanced.Bytes().empty());
}
