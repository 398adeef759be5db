#include <Wm4/Wm4ColorRGB.h>

#include <Wm4/Wm4Tuple.h>

namespace Wm4 {

bool ColorRGB::operator<(const ColorRGB& c) const
{
    return Tuple::Less<3>(mTuple, c.mTuple);
}

void ColorRGB::Clamp()
{
    for (float& channel : mTuple) {
        if (channel < 0.0f) {
            channel = 0.0f;
        } else if (channel > 1.0f) {
            channel = 1.0f;
        }
    }
}

const ColorRGB ColorRGB::BLACK(0.0f, 0.0f, 0.0f);
const ColorRGB ColorRGB::WHITE(1.0f, 1.0f, 1.0f);
const ColorRGB ColorRGB::INVALID(-1.0f, -1.0f, -1.0f);

} // namespace Wm4
