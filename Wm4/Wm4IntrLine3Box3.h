#pragma once

#include <Wm4/Wm4Box3.h>
#include <Wm4/Wm4Line3.h>

namespace Wm4 {

// Whether a line meets a solid oriented box, by separating axes. The query
// keeps copies of its objects, so temporaries may be passed.
template <class Real>
class IntrLine3Box3 {
public:
    IntrLine3Box3(const Line3<Real>& line, const Box3<Real>& box) : mLine(line), mBox(box) {}

    const Line3<Real>& GetLine() const { return mLine; }
    const Box3<Real>& GetBox() const { return mBox; }

    // True when the line has a point in the box, the faces included: a line
    // that only grazes a face or an edge intersects.
    bool Test() const;

private:
    Line3<Real> mLine;
    Box3<Real> mBox;
};

extern template class IntrLine3Box3<float>;
extern template class IntrLine3Box3<double>;

typedef IntrLine3Box3<float> IntrLine3Box3f;
typedef IntrLine3Box3<double> IntrLine3Box3d;

} // namespace Wm4
