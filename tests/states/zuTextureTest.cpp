// Textures and texture states: slots, references type-checked in Link, shared images through
// the file container and through an image catalogue, resources.

#include "states/zuStateRecords.h"
#include "support/zuFactoryTest.h"
#include "support/zuOutputCapture.h"
#include "support/zuRecordPins.h"

#include <zuSceneGraph/states/zuMaterialState.h>
#include <zuSceneGraph/states/zuTexture.h>
#include <zuSceneGraph/states/zuTextureState.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

namespace zu::test {
namespace {

using Texture = zuFactoryTest;

zuImage* makeImage(const std::string& name, char seed)
{
    const char rgb[6] = {seed, 2, 3, 4, 5, 6};
    zuImage* image = new zuImage(zuImage::RGB8, 2, 1, rgb);
    image->SetName(name);
    return image;
}

zuTexture* makeTexture(zuImage* image, zuTexture::Channel channel, int unit)
{
    zuTexture* texture = new zuTexture(image);
    texture->SetChannel(channel);
    texture->SetUnit(unit);
    return texture;
}

zuTexture* textureOf(const zuObject* state, int i)
{
    return static_cast<const zuTextureState*>(state)->GetTexture(i);
}

TEST_F(Texture, TextureStateSlots)
{
    zuPointer<zuTextureState> state = new zuTextureState;
    EXPECT_EQ(zuGlobalState::TEXTURE, state->GetStateType());
    zuPointer<zuTexture> texture = new zuTexture;
    EXPECT_TRUE(-1 == state->AttachTexture(nullptr) && 0 == state->AttachTexture(texture));
    state->SetTexture(1, nullptr);      // appends an empty slot
    state->SetTexture(2, texture);      // appends again: one texture in two slots
    state->SetTexture(5, texture);      // beyond the end: ignored
    state->SetTexture(-1, texture);
    ASSERT_EQ(3, state->GetTextureQuantity());
    EXPECT_TRUE(nullptr == state->GetTexture(1) && 3 == texture->GetReferences());

    std::vector<zuPointer<zuObject>> loaded = throughFile({state.get()});
    ASSERT_EQ(1u, loaded.size());
    EXPECT_TRUE(loaded[0]->Equals(state) && (textureOf(loaded[0], 0)) == (textureOf(loaded[0], 2)));
    EXPECT_EQ(nullptr, textureOf(loaded[0], 1));

    state->RemoveAllTextures();
    EXPECT_TRUE(0 == state->GetTextureQuantity() && 1 == texture->GetReferences());
}

TEST_F(Texture, ReferencesToOtherKindsAreDroppedInLink)
{
    // A texture state and a texture whose references point to a material state.
    const std::vector<char> bytes = pinBytes("'Top Level' 'zuCore.zuTextureState' #57 <0> #0 #0 #1 <2> |"
                                             "'Top Level' 'zuCore.zuTexture' #76 <1> #0 #0 <2> #0 #0 #0 #0 #0 #0 #0 |"
                                             "'zuCore.zuMaterialState' #102 <2> #0 #0 ~0.5 ~0.5 ~0.5 ~0.5 ~0.5 ~0.5 ~0.5 "
                                             "~0.5 ~0.5 ~0.5 ~0.5 ~0.5 ~0.5 ~0.5 |");
    const std::vector<zuPointer<zuObject>> loaded = loadRecords(bytes);
    ASSERT_EQ(2u, loaded.size());
    EXPECT_EQ(1, static_cast<const zuTextureState*>(loaded[0].get())->GetTextureQuantity());
    EXPECT_EQ(nullptr, textureOf(loaded[0], 0));
    EXPECT_EQ(nullptr, static_cast<const zuTexture*>(loaded[1].get())->GetImage());
}

TEST_F(Texture, CutAndForgedRecordsFailCleanly)
{
    zuPointer<zuTextureState> state = new zuTextureState;
    state->AttachTexture(makeTexture(makeImage("cut.png", 4), zuTexture::CH_DIFFUSE, 0));
    const std::vector<char> whole = saveToBytes({state.get()}, V6_32);
    zuOutputCapture capturedErr(zuOutputCapture::STDERR);
    // A cut at a record boundary loads the records before it, whose references to the
    // missing ones stay empty; the image record is the last one.
    for (size_t length = 1; length < whole.size(); ++length) {
        const std::vector<zuPointer<zuObject>> loaded
            = loadRecords(std::vector<char>(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
        ASSERT_LE(loaded.size(), 1u) << length;
        const zuTexture* texture = loaded.empty() ? nullptr : textureOf(loaded[0], 0);
        EXPECT_TRUE(!texture || !texture->GetImage()) << length;
    }
    // A count of slots the data cannot hold.
    EXPECT_TRUE(loadRecords(pinBytes("'Top Level' 'zuCore.zuTextureState' #57 <0> #0 #0 00 00 00 10 #0 #0 |")).empty());
    capturedErr.take();
}

TEST_F(Texture, TexturesSharingOneImageStillShareItAfterLoading)
{
    zuPointer<zuImage> image = makeImage("wood.png", 9);
    zuPointer<zuTextureState> state = new zuTextureState;
    state->AttachTexture(makeTexture(image, zuTexture::CH_DIFFUSE, 0));
    state->AttachTexture(makeTexture(image, zuTexture::CH_OPACITY, 1));
    // An enumeration outside its list survives the trip.
    state->GetTexture(1)->SetChannel(static_cast<zuTexture::Channel>(42));
    EXPECT_STREQ("UNKNOWN", zuTexture::GetChannelName(42));

    std::vector<zuPointer<zuObject>> loaded = throughFile({state.get()});
    ASSERT_EQ(1u, loaded.size());
    EXPECT_TRUE(loaded[0]->Equals(state));
    zuTexture* first = textureOf(loaded[0], 0);
    zuTexture* second = textureOf(loaded[0], 1);
    ASSERT_NE(nullptr, first->GetImage());
    EXPECT_TRUE(first->GetImage() == second->GetImage() && first->GetImage()->Equals(image));
    EXPECT_EQ(42, static_cast<int>(second->GetChannel()));
    EXPECT_EQ(1, second->GetUnit());
}

TEST_F(Texture, ImagesOfOneNameAreSharedThroughTheCatalogue)
{
    // Two textures, each with its own image of the same name, and one that names it only.
    zuPointer<zuTextureState> state = new zuTextureState;
    state->AttachTexture(makeTexture(makeImage("brick.png", 1), zuTexture::CH_DIFFUSE, 0));
    state->AttachTexture(makeTexture(makeImage("brick.png", 2), zuTexture::CH_BUMP, 0));
    zuTexture* named = new zuTexture;
    named->SetImageName("brick.png");
    state->AttachTexture(named);
    ASSERT_NE(state->GetTexture(0)->GetImage(), state->GetTexture(1)->GetImage());

    // Without a catalogue each texture keeps what the file gives it.
    std::vector<zuPointer<zuObject>> plain = throughFile({state.get()});
    ASSERT_EQ(1u, plain.size());
    EXPECT_NE(textureOf(plain[0], 0)->GetImage(), textureOf(plain[0], 1)->GetImage());
    EXPECT_EQ(nullptr, textureOf(plain[0], 2)->GetImage());

    // With one, a single image object serves all three: the first one linked.
    zuCatalog<zuImage> catalog;
    std::vector<zuPointer<zuObject>> shared = throughFile({state.get()}, 16, &catalog);
    ASSERT_EQ(1u, shared.size());
    ASSERT_EQ(1, catalog.GetQuantity());
    zuImage* listed = catalog.Find("brick.png");
    ASSERT_NE(nullptr, listed);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(listed, textureOf(shared[0], i)->GetImage()) << "texture " << i;
    EXPECT_EQ(1, listed->GetData()[0]);
    // The catalogue and three textures hold it; the file's second image is gone.
    EXPECT_EQ(4, listed->GetReferences());

    // A second load with the same catalogue takes the listed image.
    std::vector<zuPointer<zuObject>> again = throughFile({state.get()}, 16, &catalog);
    ASSERT_EQ(1u, again.size());
    EXPECT_TRUE(listed == (textureOf(again[0], 1)->GetImage()) && 1 == catalog.GetQuantity());
    catalog.ReleaseAll();
    EXPECT_EQ(6, listed->GetReferences());
}

TEST_F(Texture, ResourcesEqualsAndClone)
{
    zuPointer<zuImage> image = makeImage("r.png", 3);
    zuPointer<zuTexture> texture = makeTexture(image, zuTexture::CH_SPECULAR, 2);
    std::vector<zuDynamicLoadingResource*> resources;
    EXPECT_TRUE(texture->getResources(resources));
    EXPECT_EQ(resources, (std::vector<zuDynamicLoadingResource*>{image.get()}));
    EXPECT_FALSE(zuPointer<zuTexture>(new zuTexture)->getResources(resources));
    EXPECT_EQ(1u, resources.size());

    zuRttiInterface* target = nullptr;
    ASSERT_TRUE(texture->Clone(target));
    zuPointer<zuRttiInterface> clone = target;
    EXPECT_TRUE(clone->Equals(texture));
    EXPECT_EQ(image.get(), static_cast<zuTexture*>(target)->GetImage());
    static_cast<zuTexture*>(target)->SetFilter(zuTexture::FM_NEAREST, zuTexture::FM_LINEAR);
    EXPECT_FALSE(clone->Equals(texture));

    // Images compare by content, not by identity.
    zuPointer<zuTexture> other = makeTexture(makeImage("r.png", 3), zuTexture::CH_SPECULAR, 2);
    EXPECT_TRUE(other->Equals(texture));
    other->GetImage()->GetData()[5] = 0;
    EXPECT_FALSE(other->Equals(texture));

    // Setting no image keeps the name of the last one.
    other->SetImage(nullptr);
    EXPECT_EQ("r.png", other->GetImageName());
}

} // namespace
} // namespace zu::test
