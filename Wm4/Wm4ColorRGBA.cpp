#include <Wm4/Wm4ColorRGBA.h>

#include <Wm4/Wm4Tuple.h>

namespace Wm4 {

bool ColorRGBA::operator<(const ColorRGBA& c) const
{
    return Tuple::Less<4>(mTuple, c.mTuple);
}

ColorRGBA ColorRGBA::operator+(const ColorRGBA& c) const
{
    return ColorRGBA(mTuple[0] + c.mTuple[0], mTuple[1] + c.mTuple[1], mTuple[2] + c.mTuple[2], mTuple[3] + c.mTuple[3]);
}

ColorRGBA ColorRGBA::operator-(const ColorRGBA& c) const
{
    return ColorRGBA(mTuple[0] - c.mTuple[0], mTuple[1] - c.mTuple[1], mTuple[2] - c.mTuple[2], mTuple[3] - c.mTuple[3]);
}

ColorRGBA ColorRGBA::operator*(const ColorRGBA& c) const
{
    return ColorRGBA(mTuple[0] * c.mTuple[0], mTuple[1] * c.mTuple[1], mTuple[2] * c.mTuple[2], mTuple[3] * c.mTuple[3]);
}

void ColorRGBA::Clamp()
{
    for (float& channel : mTuple) {
        if (channel < 0.0f) {
            channel = 0.0f;
        } else if (channel > 1.0f) {
            channel = 1.0f;
        }
    }
}

const ColorRGBA ColorRGBA::BLACK(0.0f, 0.0f, 0.0f, 1.0f);
const ColorRGBA ColorRGBA::WHITE(1.0f, 1.0f, 1.0f, 1.0f);
const ColorRGBA ColorRGBA::INVALID(-1.0f, -1.0f, -1.0f, -1.0f);

} // namespace Wm4
