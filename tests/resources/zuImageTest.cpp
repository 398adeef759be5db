// Images: format sizes, the saved record, hostile records, and the pixel block as a
// dynamically loaded resource (load policy, file offset, loads back from the file).

#include "resources/zuResourceTestSupport.h"
#include "support/zuOutputCapture.h"

#include <zuSceneGraph/resources/zuImage.h>
#include <zuSceneGraph/resources/zuRendererInterface.h>

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <vector>

namespace zu::test {
namespace {

const zuStreamVersion V6_32(6, 32);

std::vector<char> pixels(int size, int seed)
{
    std::vector<char> bytes(static_cast<size_t>(size));
    for (int i = 0; i < size; ++i)
        bytes[static_cast<size_t>(i)] = static_cast<char>((seed * 37 + i * 11) & 0xFF);
    return bytes;
}

bool hasPixels(const zuImage& image, const std::vector<char>& expected)
{
    return image.GetData() && image.GetDataSize() == static_cast<int>(expected.size())
        && std::memcmp(image.GetData(), expected.data(), expected.size()) == 0;
}

// The top-level images of a file (empty on failure).
// A 6.32 stream of one top-level image record "a" with the given fields and block.
std::vector<char> imageStream(int format, int width, int height, int size, const std::vector<char>& block)
{
    zuBytes fields = ints({format, width, height, size});
    fields.raw(block.data(), block.size());
    return recordStream("zuCore.zuImage", fields, 0x1000, V6_32, "a");
}

using Image = ResourceLibrary;

TEST(zuImageFormats, SizesOfPlainAndCompressedFormats)
{
    uint64_t size = 0;
    ASSERT_TRUE(zuImage::ComputeDataSize(zuImage::RGB8, 5, 3, size));
    EXPECT_EQ(45u, size);
    ASSERT_TRUE(zuImage::ComputeDataSize(zuImage::RGBA32F, 2, 2, size));
    EXPECT_EQ(64u, size);
    // Compressed: 4x4 blocks, rounded up in each direction.
    ASSERT_TRUE(zuImage::ComputeDataSize(zuImage::DXT1, 5, 4, size));
    EXPECT_EQ(16u, size);
    ASSERT_TRUE(zuImage::ComputeDataSize(zuImage::DXT5, 1, 1, size));
    EXPECT_EQ(16u, size);
    ASSERT_TRUE(zuImage::ComputeDataSize(zuImage::DXT3, 0, 7, size));
    EXPECT_EQ(0u, size);
    // The largest dimensions: 4 bytes a pixel still fit 64 bits, 16 do not (no wrapping).
    const int big = std::numeric_limits<int>::max();
    ASSERT_TRUE(zuImage::ComputeDataSize(zuImage::RGBA8, big, big, size));
    EXPECT_EQ(4u * static_cast<uint64_t>(big) * static_cast<uint64_t>(big), size);
    EXPECT_FALSE(zuImage::ComputeDataSize(zuImage::RGBA32F, big, big, size));
    EXPECT_FALSE(zuImage::ComputeDataSize(zuImage::RGB8, -1, 1, size));
    EXPECT_FALSE(zuImage::ComputeDataSize(static_cast<zuImage::FormatMode>(99), 1, 1, size));

    EXPECT_STREQ("UNKNOWN", zuImage::GetFormatName(zuImage::FORMAT_QUANTITY));
}

TEST(zuImageFormats, SetImageRefusesWhatTheFormatCannotHoldAndChangesNothing)
{
    const std::vector<char> rgb = pixels(12, 1);
    zuImage image(zuImage::RGB8, 2, 2, rgb.data());
    ASSERT_TRUE(hasPixels(image, rgb));
    // Beyond the 2 GB the record stores, negative, unknown.
    EXPECT_FALSE(image.SetImage(zuImage::RGBA8, 32768, 16384));
    EXPECT_FALSE(image.SetImage(zuImage::RGB8, 2, -2));
    EXPECT_FALSE(image.SetImage(static_cast<zuImage::FormatMode>(-1), 2, 2));
    EXPECT_EQ(zuImage::RGB8, image.GetFormat());
    EXPECT_TRUE(hasPixels(image, rgb));
    // No pixels given: zeros.
    ASSERT_TRUE(image.SetImage(zuImage::L8, 3, 1));
    EXPECT_TRUE(hasPixels(image, std::vector<char>(3, 0)));
}

TEST_F(Image, RecordsWrittenByHandAndHostileRecords)
{
    const std::vector<char> block = pixels(12, 2);
    zuPointer<zuImage> loaded = loadSingle<zuImage>(imageStream(zuImage::RGB8, 2, 2, 12, block), V6_32);
    ASSERT_TRUE(loaded);
    EXPECT_TRUE(hasPixels(*loaded, block));
    // An unknown format keeps its block as read.
    loaded = loadSingle<zuImage>(imageStream(99, 7, 7, 12, block), V6_32);
    ASSERT_TRUE(loaded);
    EXPECT_EQ(99, static_cast<int>(loaded->GetFormat()));
    EXPECT_TRUE(hasPixels(*loaded, block));

    // Refused before anything is allocated: a size that disagrees with format and dimensions
    // in either direction, dimensions whose product overflows 32 bits (it must not wrap round
    // to the size given), negative dimensions, a block larger than the data, or negative.
    zuLogCapture quiet;
    zuOutputCapture capturedErr(zuOutputCapture::STDERR);
    EXPECT_FALSE(loadSingle<zuImage>(imageStream(zuImage::RGB8, 2, 2, 11, pixels(11, 2)), V6_32));
    EXPECT_FALSE(loadSingle<zuImage>(imageStream(zuImage::RGB8, 3, 2, 12, block), V6_32));
    EXPECT_FALSE(loadSingle<zuImage>(imageStream(zuImage::RGBA8, 65536, 16384, 0, {}), V6_32));
    EXPECT_FALSE(loadSingle<zuImage>(imageStream(zuImage::RGB8, -2, -2, 12, block), V6_32));
    EXPECT_FALSE(loadSingle<zuImage>(imageStream(zuImage::L8, 1 << 20, 1 << 10, 1 << 30, block), V6_32));
    EXPECT_FALSE(loadSingle<zuImage>(imageStream(99, 1, 1, -1, {}), V6_32));
    capturedErr.take();
}

TEST_F(Image, NotLoadedByPolicyThenLoadedBackFromItsFile)
{
    zuTempDir dir;
    const std::string path = dir.file("images.mvk");
    const std::vector<char> first = pixels(4 * 4 * 3, 7);
    const std::vector<char> second = pixels(16, 8);
    zuPointer<zuImage> a = new zuImage(zuImage::RGB8, 4, 4, first.data());
    zuPointer<zuImage> b = new zuImage(zuImage::DXT5, 3, 3, second.data());
    a->SetName("a");
    b->SetName("b");
    // Small blocks, so that the pixels cross block boundaries.
    ASSERT_TRUE(saveResources(path, {a.get(), b.get()}, 16));
    // Saving records where the block went.
    EXPECT_EQ(path, a->getResourceFilePath());
    EXPECT_EQ(first, readFileBytes(path, a->getStreamOffset(), first.size()));

    zuDynamicLoadingResource::SetLoadPolicy(zuImage::TYPE, false);
    std::vector<zuPointer<zuImage>> images = loadResources<zuImage>(path, 64);
    ASSERT_EQ(2u, images.size());
    for (const auto& image : images) {
        EXPECT_FALSE(image->isCPUResident());
        EXPECT_EQ(path, image->getResourceFilePath());
        EXPECT_EQ(V6_32, image->getStreamVersion());
    }
    EXPECT_EQ(zuImage::DXT5, images[1]->GetFormat());
    EXPECT_EQ(16, images[1]->GetDataSize());
    EXPECT_EQ(a->getStreamOffset(), images[0]->getStreamOffset());
    EXPECT_EQ(second, readFileBytes(path, images[1]->getStreamOffset(), second.size()));
    // Equal in everything but residency: not equal.
    EXPECT_FALSE(images[0]->Equals(a));
    // A clone of a non-resident image reads the same pixels from the same file.
    zuRttiInterface* lazy = nullptr;
    ASSERT_TRUE(images[0]->Clone(lazy));
    zuPointer<zuImage> lazyClone = static_cast<zuImage*>(lazy);
    EXPECT_FALSE(lazyClone->isCPUResident());
    ASSERT_TRUE(zuRendererInterface::LoadCPUData(lazyClone));
    EXPECT_TRUE(hasPixels(*lazyClone, first));

    ASSERT_TRUE(zuRendererInterface::LoadCPUData(images[0]));
    EXPECT_TRUE(hasPixels(*images[0], first));
    EXPECT_TRUE(images[0]->Equals(a));
    EXPECT_TRUE(zuRendererInterface::DeleteCPUData(images[0], false));

    // Saving a non-resident image reads its pixels for the write and drops them again;
    // the image then refers to the new file.
    const std::string copyPath = dir.file("copy.mvk");
    ASSERT_TRUE(saveResources(copyPath, {images[0].get()}));
    EXPECT_FALSE(images[0]->isCPUResident());
    EXPECT_EQ(copyPath, images[0]->getResourceFilePath());
    EXPECT_EQ(first, readFileBytes(copyPath, images[0]->getStreamOffset(), first.size()));
}

TEST_F(Image, EqualsAndClone)
{
    const std::vector<char> rgb = pixels(12, 3);
    zuPointer<zuImage> image = new zuImage(zuImage::RGB8, 2, 2, rgb.data());
    image->SetName("i");
    zuRttiInterface* target = nullptr;
    ASSERT_TRUE(image->Clone(target));
    zuPointer<zuRttiInterface> clone = target;
    EXPECT_TRUE(clone->Equals(image));
    zuImage* copy = static_cast<zuImage*>(target);
    EXPECT_NE(copy->GetData(), image->GetData());
    copy->GetData()[11] ^= 1;
    EXPECT_FALSE(copy->Equals(image));
    copy->GetData()[11] ^= 1;
    copy->SetName("j");
    EXPECT_FALSE(copy->Equals(image));

    // Not into another class.
    zuRttiInterface* node = new zuTestNode("n");
    zuPointer<zuRttiInterface> keep = node;
    EXPECT_FALSE(image->Clone(node));
}

} // namespace
} // namespace zu::test
