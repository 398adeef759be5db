// Loading data that is cut short or forged: every load must fail cleanly (or, at a record
// boundary, succeed with the records that are there), hand out nothing when it fails, free
// everything it built, and name the offset where the data broke. Randomly damaged files are
// the fuzz targets' work.

#include "support/zuFactoryTest.h"
#include "support/zuOutputCapture.h"
#include "support/zuTestObjects.h"

#include <zuSceneGraph/stream/zuFileStream.h>

#include <zuSystem/zuMemoryIoDevice.h>

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <set>

namespace zu::test {
namespace {

using BadInput = zuLeakCheckedTest;

const char* const corruptPrefix = "zuBaseStream error : corrupt or truncated data at offset ";

// root (controller c) with children a, b and, with a stranger, x; b's child is a, x's child
// is a. x is a zuTestOtherNode, which no factory builds. Records: root, c, a, b (, x).
struct DamageGraph {
    zuPointer<zuTestNode> root = new zuTestNode("root", 7);
    zuPointer<zuTestController> c = new zuTestController;
    zuPointer<zuTestNode> a = new zuTestNode("a", 1);
    zuPointer<zuTestNode> b = new zuTestNode("bb", 2);
    zuPointer<zuTestNode> x;
    explicit DamageGraph(bool withStranger)
    {
        c->SetName("ctl");
        root->AttachController(c);
        root->AttachChild(a);
        root->AttachChild(b);
        b->AttachChild(a);
        if (withStranger) {
            x = new zuTestOtherNode("x", 3);
            root->AttachChild(x);
            x->AttachChild(a);
        }
    }
    std::vector<const void*> objects() const { return {root, c, a, b, x}; }
};

// Replaces the saved identities (object addresses) by values that differ from each other and
// from null in every byte, so that no damage of a few bytes turns one into another and makes
// an object its own child.
std::vector<char> withDistinctIdentities(std::vector<char> bytes, const std::vector<const void*>& objects)
{
    for (size_t k = 0; k < objects.size(); ++k) {
        if (!objects[k])
            continue;
        const uint64_t from = reinterpret_cast<uintptr_t>(objects[k]);
        const uint64_t to = 0x0101010101010101ull * (k + 1);
        for (size_t i = 0; i + 8 <= bytes.size(); ++i)
            if (std::memcmp(&bytes[i], &from, 8) == 0)
                std::memcpy(&bytes[i], &to, 8);
    }
    return bytes;
}

// Where each record lies in a saved buffer of version 6.0 or later.
struct RecordSpan {
    size_t start;    // the type name's length field
    size_t nameEnd;  // just past the type name
    size_t end;
    std::string type;
};

std::vector<RecordSpan> recordSpans(const std::vector<char>& bytes, size_t offset)
{
    std::vector<RecordSpan> spans;
    const auto readInt = [&bytes](size_t at) {
        int32_t value = 0;
        std::memcpy(&value, &bytes[at], 4);
        return value;
    };
    while (offset < bytes.size()) {
        int32_t length = readInt(offset);
        std::string text(&bytes[offset + 4], static_cast<size_t>(length));
        if (text == "Top Level") {
            offset += 4 + 9;
            length = readInt(offset);
            text.assign(&bytes[offset + 4], static_cast<size_t>(length));
        }
        const size_t nameEnd = offset + 4 + static_cast<size_t>(length);
        const size_t end = offset + static_cast<size_t>(readInt(nameEnd));
        spans.push_back({offset, nameEnd, end, text});
        offset = end;
    }
    return spans;
}

// Checks the report of a load of `bytes` cut to `prefix` bytes.
void expectCutReported(const std::string& err, size_t prefix, const std::vector<RecordSpan>& spans, size_t dataStart)
{
    ASSERT_EQ(err.rfind(corruptPrefix, 0), 0u) << "prefix " << prefix << ": " << err;
    EXPECT_EQ(err.find('\n'), err.size() - 1) << err;  // one line
    const size_t offset = std::stoul(err.substr(std::strlen(corruptPrefix)));
    EXPECT_LE(offset, prefix) << err;
    // The record that was cut, and whether its type name was read whole.
    const RecordSpan* cut = nullptr;
    size_t cutStart = dataStart;
    for (const RecordSpan& span : spans) {
        if (prefix < span.end) {
            cut = &span;
            break;
        }
        cutStart = span.end;
    }
    ASSERT_NE(cut, nullptr);
    EXPECT_GE(offset, cutStart) << err;
    const std::string where = ", in the record \"" + cut->type + "\" at offset " + std::to_string(cut->start) + ")\n";
    if (prefix >= cut->nameEnd)
        EXPECT_EQ(err.substr(err.size() - where.size()), where) << "prefix " << prefix;
    else
        EXPECT_EQ(err.find("in the record"), std::string::npos) << "prefix " << prefix << ": " << err;
}

TEST_F(BadInput, EveryPrefixOfAFileStreamFailsUnlessItEndsOnARecordBoundary)
{
    std::vector<char> saved;
    std::vector<RecordSpan> spans;
    {
        DamageGraph g(true);
        saved = withDistinctIdentities(saveToFileBytes({g.root}, zuStreamVersion(6, 32), 16), g.objects());
    }
    spans = recordSpans(saved, 9);
    ASSERT_EQ(spans.size(), 5u);
    std::set<size_t> boundaries{9};  // the header alone is an empty stream
    for (const RecordSpan& span : spans)
        boundaries.insert(span.end);

    for (int blockSize : {8, 16, 24}) {
        for (size_t prefix = 0; prefix <= saved.size(); ++prefix) {
            zuMemoryIoDevice device(std::vector<char>(saved.begin(), saved.begin() + static_cast<long>(prefix)));
            zuLogCapture log;
            std::string err;
            {
                zuFileStream stream(blockSize);
                zuOutputCapture capturedOut(zuOutputCapture::STDOUT);
                zuOutputCapture capturedErr(zuOutputCapture::STDERR);
                const bool loaded = stream.Load(device, "cut");
                err = capturedErr.take();
                capturedOut.take();
                if (boundaries.count(prefix)) {
                    EXPECT_TRUE(loaded) << "prefix " << prefix;
                    EXPECT_TRUE(err == "" && stream.GetObjectCount() == (prefix == 9 ? 0 : 1));
                } else {
                    EXPECT_FALSE(loaded) << "block " << blockSize << " prefix " << prefix;
                    EXPECT_TRUE(stream.GetObjectCount() == 0 && stream.isStreamError());
                    if (prefix < 9) {
                        ASSERT_EQ(log.mMessages.size(), 1u);
                        EXPECT_EQ(log.mMessages[0].first, "zustream");
                        EXPECT_EQ(log.mMessages[0].second, "The stream is too short to hold a header: 'cut' at offset 0");
                    } else {
                        EXPECT_TRUE(log.mMessages.empty());
                        expectCutReported(err, prefix, spans, 9);
                    }
                }
            }
            ASSERT_EQ(zuTestNode::msLiving, 0) << "block " << blockSize << " prefix " << prefix;
        }
    }
}

// A forged top-level record and the report its load must give.
struct Forgery {
    const char* what;
    zuBytes bytes;
    uint64_t offset;     // where the data is found broken, from the start of the records
    const char* reason;
    const char* type;    // the record being read, or null
    uint64_t recordStart;
};

zuBytes nodeStart(int32_t size)
{
    zuBytes bytes;
    bytes.str("Top Level").str("zuTest.zuTestNode").i32(size).u64(0x0101010101010101ull);
    return bytes;
}

// The record of a node "node" with no controllers and no children.
constexpr int32_t plainNodeSize = 4 + 17 + 4 + 8 + 4 + 4 + 4 + 4 + 4;

std::vector<Forgery> forgeries()
{
    const char* node = "zuTest.zuTestNode";
    const char* tooMany = "a count exceeds the data that remains";
    const char* pastEnd = "a read runs past the end of the data";
    const char* notFilled = "the record's fields do not fill its size";
    std::vector<Forgery> list;
    list.push_back({"marker length", zuBytes().i32(INT_MAX).raw("Top Level", 9), 4, tooMany, nullptr, 0});
    list.push_back({"type name length", zuBytes().str("Top Level").i32(INT_MAX).raw(node, 17), 17, tooMany, nullptr, 0});
    list.push_back({"type name cut", zuBytes().str("Top Level").i32(17).raw(node, 16), 17, tooMany, nullptr, 0});
    list.push_back({"name length", nodeStart(plainNodeSize).i32(INT_MAX).raw("node", 4).i32(0).i32(0).i32(0), 50,
                    tooMany, node, 13});
    for (int32_t count : {-1, INT_MIN, INT_MAX, 2})
        list.push_back({"controller count", nodeStart(plainNodeSize).str("node").i32(count).i32(0).i32(0), 58, tooMany,
                        node, 13});
    list.push_back({"controller count reaching past the end", nodeStart(plainNodeSize).str("node").i32(1).i32(0).i32(0),
                    66, pastEnd, node, 13});
    for (int32_t count : {-1, INT_MIN, INT_MAX, 1})
        list.push_back({"child count", nodeStart(plainNodeSize).str("node").i32(0).i32(0).i32(count), 66, tooMany, node,
                        13});
    for (int32_t size : {plainNodeSize - 1, plainNodeSize + 1, 0, -1, INT_MIN})
        list.push_back({"record size", nodeStart(size).str("node").i32(0).i32(0).i32(0), 66, notFilled, node, 13});
    list.push_back({"controllers on an unnamed object",
                    zuBytes().str("Top Level").str("zuTest.zuShortRecord").i32(4 + 20 + 4 + 8 + 4 + 4 + 8)
                        .u64(0x0202020202020202ull).str("").i32(1).u64(0),
                    57, "controllers on an object that carries none", "zuTest.zuShortRecord", 13});

    // Unknown types are skipped by their size, which must cover their header (name + 8).
    const char* unknown = "zuTest.Nothing";
    const char* tooSmall = "the size of the skipped record is too small";
    for (int32_t size : {21, 0, -1, INT_MIN})
        list.push_back({"skipped record size", zuBytes().str(unknown).i32(size).u64(0), 22, tooSmall, unknown, 0});
    for (int32_t size : {INT_MAX, 22 + 9})
        list.push_back({"skipped record size", zuBytes().str(unknown).i32(size).u64(0), 22,
                        "a skip runs past the end of the data", unknown, 0});
    return list;
}

std::string reportOf(const Forgery& forgery, uint64_t headerLength)
{
    std::string text = corruptPrefix + std::to_string(forgery.offset + headerLength) + " (" + forgery.reason;
    if (forgery.type)
        text += ", in the record \"" + std::string(forgery.type) + "\" at offset "
            + std::to_string(forgery.recordStart + headerLength);
    return text + ")\n";
}

zuRttiInterface* shortRecordFactory(zuBaseStream& stream)
{
    return zuBaseStream::LoadNew<zuShortRecord>(stream);
}

TEST_F(BadInput, ForgedLengthsCountsAndSizesAreReportedWhereTheyBreak)
{
    zuRttiInterface::RegisterFactoryFunction(zuShortRecord::TYPE.GetName(), shortRecordFactory);
    for (const Forgery& forgery : forgeries()) {
        {
            zuBaseStream stream;
            stream.SetVersion(zuStreamVersion(6, 32));
            std::vector<char> bytes = forgery.bytes.bytes();
            zuOutputCapture capturedOut(zuOutputCapture::STDOUT);
            zuOutputCapture capturedErr(zuOutputCapture::STDERR);
            EXPECT_FALSE(stream.Load(bytes.data(), bytes.size())) << forgery.what;
            EXPECT_EQ(capturedErr.take(), reportOf(forgery, 0)) << forgery.what;
            capturedOut.take();
            EXPECT_EQ(stream.GetObjectCount(), 0);
        }
        {
            zuFileStream stream(8);
            std::vector<char> bytes{'M', 'V', 'K', ' ', '6', '.', '3', '2', '\0'};
            bytes.insert(bytes.end(), forgery.bytes.bytes().begin(), forgery.bytes.bytes().end());
            zuMemoryIoDevice device(bytes);
            zuOutputCapture capturedOut(zuOutputCapture::STDOUT);
            zuOutputCapture capturedErr(zuOutputCapture::STDERR);
            EXPECT_FALSE(stream.Load(device, "forged")) << forgery.what;
            EXPECT_EQ(capturedErr.take(), reportOf(forgery, 9)) << forgery.what;
            capturedOut.take();
            EXPECT_EQ(stream.GetObjectCount(), 0);
        }
        ASSERT_EQ(zuTestNode::msLiving, 0) << forgery.what;
    }
    zuRttiInterface::UnregisterFactoryFunction(zuShortRecord::TYPE.GetName());
}

TEST_F(BadInput, LengthsAndSizesAtTheirLimitsThatStillFitLoad)
{
    // A negative name length reads as the empty name.
    zuBytes negativeName = nodeStart(plainNodeSize - 4);
    negativeName.i32(-5).i32(0).i32(4).i32(0);
    // An unknown record exactly as long as its header, then a node.
    zuBytes emptySkip;
    emptySkip.str("zuTest.Nothing").i32(22);
    {
        zuBaseStream stream;
        stream.SetVersion(zuStreamVersion(6, 32));
        std::vector<char> bytes = negativeName.bytes();
        ASSERT_TRUE(stream.Load(bytes.data(), bytes.size()));
        ASSERT_EQ(stream.GetObjectCount(), 1);
        auto* node = static_cast<zuTestNode*>(stream.GetObjectAt(0));
        EXPECT_TRUE(node->GetName() == "" && node->GetSetNameCalls() == 0 && node->GetValue() == 4);
    }
    {
        zuBaseStream stream;
        stream.SetVersion(zuStreamVersion(6, 32));
        std::vector<char> bytes = emptySkip.bytes();
        bytes.insert(bytes.end(), negativeName.bytes().begin(), negativeName.bytes().end());
        zuOutputCapture capturedOut(zuOutputCapture::STDOUT);
        ASSERT_TRUE(stream.Load(bytes.data(), bytes.size()));
        EXPECT_TRUE(capturedOut.take() == "Skipping object type zuTest.Nothing\n" && stream.GetObjectCount() == 1);
    }
}

} // namespace
} // namespace zu::test
