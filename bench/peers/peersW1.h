#pragma once

// W1 on both sides: what one run of a side measures, each run in a forked child (the driver,
// peersW1.cpp, alternates the sides and takes the medians). The two sides build the same
// scene from zusgW1Layout.h; neither side's source sees the other library's headers.

#include "zusgW1Layout.h"

#include <functional>
#include <string>

namespace peers {

// A child builds the scene, updates it, culls it, and saves it to a file.
struct W1SceneRun {
    double buildSeconds = 0.0;
    double updateSeconds = 0.0;  // median of the timed passes, after one untimed pass
    double cullSeconds = 0.0;    // likewise, each pass after an untimed update, as in a frame
    double saveSeconds = 0.0;
    long rssBeforeKB = 0;
    long peakAfterBuildKB = 0;
    long leaves = 0;
    long visible = 0;
    long visibleByWorldBoxes = 0;  // the peer's leaves tested as ours are (world-axis boxes)
    long long fileBytes = 0;
    bool ok = false;
};

// A child loads the file; a lazy load (ours only) leaves the blocks in the file, then updates,
// culls and reads back the blocks of the visible leaves: the first frame of a lazy open.
struct W1LoadRun {
    double loadSeconds = 0.0;
    double updateSeconds = 0.0;    // lazy only
    double cullSeconds = 0.0;      // lazy only
    double readBackSeconds = 0.0;  // lazy only
    double readBackProcessorSeconds = 0.0;
    long rssBeforeKB = 0;
    long peakKB = 0;
    long leaves = 0;
    long visible = 0;  // checked after the timing on full loads
    long blocksRead = 0;
    bool ok = false;
};

// How many timed update and cull passes a scene run takes.
constexpr int PASSES = 3;

// Picking: the nearest hit of rays through pixels of a PICK_VIEWPORT-square viewport of the
// W1 camera where a part is seen. Our side chooses the pixels once (pickPixels) and writes
// them to a file, x and y floats; both sides pick through the same ones.
constexpr int PICK_VIEWPORT = 1000;
constexpr int PICK_RAYS = 2000;

// The median processor time of PASSES passes. Picks are timed so, so that the waits of a
// machine shared with other builds do not fall on one side's short passes more than on the
// other's.
double pickPasses(const std::function<void()>& pass);

// A child builds and updates the scene, builds the picking trees of every mesh (ours: the
// box trees; the peer's: its k-d trees), then picks through every pixel, one untimed pass
// and PASSES timed ones.
struct W1PickRun {
    double treeSeconds = 0.0;
    long treeKB = 0;           // resident memory the trees added
    double pickSeconds = 0.0;  // processor time per pick, the median pass
    long hits = 0;             // of the last pass
    int peerMode = 0;          // the peer's faster mode: 0 all hits, 1 nearest only
    bool ok = false;
};

// The segment of the W1 camera through pixel (x, y), from the near to the far plane.
void pixelSegment(const zusg::W1Layout& layout, float x, float y, float start[3], float end[3]);
bool pickPixels(const zusg::W1Layout& layout, const std::string& path);
W1PickRun oursPick(const zusg::W1Layout& layout, const std::string& pixels);
W1PickRun osgPick(const zusg::W1Layout& layout, const std::string& pixels);

W1SceneRun oursScene(const zusg::W1Layout& layout, const std::string& path);
W1LoadRun oursLoad(const zusg::W1Layout& layout, const std::string& path, bool lazy);

const char* osgVersion();
W1SceneRun osgScene(const zusg::W1Layout& layout, const std::string& path);
W1LoadRun osgLoad(const zusg::W1Layout& layout, const std::string& path);

} // namespace peers
