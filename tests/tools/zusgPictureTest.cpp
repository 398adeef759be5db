// The demo's picture as a viewer shows it: rendered by rsvg-convert (when installed), the
// centre of a visible leaf is drawn and a pixel whose ray meets no leaf's bound is background.

#include "zusgRunner.h"
#include "zusgW1Assembly.h"

#include <zuSceneGraph/culling/zuCuller.h>
#include <zuSceneGraph/io/zuSvgBuilder.h>
#include <zuSceneGraph/zuSceneGraph.h>

#include <gtest/gtest.h>

namespace zu::test {
namespace {

class ZusgPicture : public ZusgRunner {
protected:
    static void SetUpTestSuite() { initializeZuSceneGraph(); }
    static void TearDownTestSuite() { terminateZuSceneGraph(); }
};

TEST_F(ZusgPicture, DemoPictureRendersTheVisibleLeavesOnTheBackground)
{
    if (std::system("command -v rsvg-convert >/dev/null && command -v python3 >/dev/null") != 0)
        GTEST_SKIP() << "rsvg-convert (librsvg2-bin) or python3 is missing";
    ASSERT_EQ(run({"demo", "--depth", "2", "--svg", "demo.svg"}).status, 0);
    ASSERT_EQ(std::system(("rsvg-convert " + quoted(file("demo.svg").string()) + " -o "
                           + quoted(file("demo.png").string())).c_str()), 0);

    const zusg::W1Assembly w1(2);
    zuPointer<zuNode> root = w1.build();
    root->UpdateGS();
    const zuPointer<zuCamera> camera = w1.camera();
    zuCuller culler;
    culler.SetCamera(camera);
    culler.ComputeVisibleSet(root, nullptr, false);
    zuSvgBuilder projection;
    projection.setCamera(*camera);
    projection.setViewport(800, 800);
    const auto inside = [](float x, float y) { return x > 10 && x < 790 && y > 10 && y < 790; };
    float x = -1, y = -1;
    for (const zuRenderableSpatial* leaf : culler.GetVisibleSet())
        if (!inside(x, y))
            projection.project(leaf->GetWorldBound().GetCenter(), x, y);
    ASSERT_TRUE(inside(x, y));

    // A pixel whose neighbourhood no visible bound reaches, so that no edge's smoothing does.
    const auto meets = [&](float px, float py) {
        const Wm4::Vector3<float> direction = camera->GetDVector() * 0.5f
            + camera->GetRVector() * (px / 800.0f - 0.5f) - camera->GetUVector() * (py / 800.0f - 0.5f);
        for (const zuRenderableSpatial* leaf : culler.GetVisibleSet())
            if (leaf->GetWorldBound().testIntersectionBox(camera->GetLocation(), direction, 0.0f,
                                                          Wm4::Math<float>::MAX_REAL))
                return true;
        return false;
    };
    std::string background;
    for (int py = 5; py < 800 && background.empty(); py += 10)
        for (int px = 5; px < 800 && background.empty(); px += 10)
            if (!meets(px - 2.0f, py - 2.0f) && !meets(px + 3.0f, py - 2.0f) && !meets(px - 2.0f, py + 3.0f)
                && !meets(px + 3.0f, py + 3.0f) && !meets(px + 0.5f, py + 0.5f))
                background = std::to_string(px) + "," + std::to_string(py);
    ASSERT_FALSE(background.empty());

    const std::string command = "python3 " + quoted(SVG_CHECK) + " pixels " + quoted(file("demo.png").string()) + " "
                              + std::to_string(static_cast<int>(x)) + "," + std::to_string(static_cast<int>(y)) + " "
                              + background + " >" + quoted(file("pixels").string());
    ASSERT_EQ(std::system(command.c_str()), 0);
    const std::string pixels = readFile(file("pixels"));
    EXPECT_NE(pixels.substr(0, pixels.find('\n')), "255 255 255 255") << pixels;
    EXPECT_EQ(pixels.substr(pixels.find('\n') + 1), "255 255 255 255\n") << background;
}

} // namespace
} // namespace zu::test
